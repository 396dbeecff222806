#include "app/ui/ExportNotice.h"

#include "app/ui/FileNames.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QPushButton>

namespace quillet {

ExportNotice::ExportNotice(const ThemeSource& source, const BackgroundRender::Services& services, const RenderOptions& options,
                           QWidget* parent)
    : Notice(source, tr("Exporting “%1”…").arg(fileName(options.output)), parent),
      m_output(options.output),
      m_stop(addButton(tr("Stop"))),
      m_render(services, options, { [this](int percent) { showProgress(percent); }, [this](const auto& end) { showEnd(end); } })
{
    setProgress(0);
    m_stop.setAccessibleName(tr("Stop the export"));
    connect(&m_stop, &QAbstractButton::clicked, this, [this] { m_render.cancel(); });
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] { m_render.cancel(); });
}

void ExportNotice::showProgress(int percent)
{
    setSentence(tr("Exporting “%1”: %2%").arg(fileName(m_output)).arg(percent));
    setProgress(percent);
}

void ExportNotice::showEnd(const std::expected<RenderEnd, std::string>& end)
{
    if (end && *end == RenderEnd::cancelled) {
        deleteLater();
        return;
    }
    setProgress({});
    m_stop.hide();
    connect(&addButton(tr("Close")), &QAbstractButton::clicked, this, &QObject::deleteLater);
    setSentence(end ? tr("“%1” has been written.").arg(pathText(m_output)) : QString::fromStdString(end.error()));
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

}  // namespace quillet
