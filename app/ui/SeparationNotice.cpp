#include "app/ui/SeparationNotice.h"

#include "app/ui/FileNames.h"

#include <QAccessible>
#include <QPushButton>

#include <cmath>
#include <utility>

namespace quillet {
namespace {

using Kind = StemSeparationPhase::Kind;

}  // namespace

SeparationNotice::SeparationNotice(const ThemeSource& source, StemSeparator& separator, Handlers handlers, QWidget* parent)
    : Notice(source, {}, parent),
      m_separator(separator),
      m_handlers(std::move(handlers)),
      m_show(addButton(tr("Show"))),
      m_cancel(addButton(tr("Cancel"))),
      m_use(addButton(tr("Use the Stems"))),
      m_close(addButton(tr("Close")))
{
    m_show.setAccessibleName(tr("Show the separation"));
    m_cancel.setAccessibleName(tr("Cancel the separation"));
    connect(&m_show, &QAbstractButton::clicked, this, [this] { m_handlers.show(); });
    connect(&m_cancel, &QAbstractButton::clicked, this, [this] { m_separator.cancel(); });
    connect(&m_use, &QAbstractButton::clicked, this, [this] {
        dismiss();
        m_handlers.use(m_separator.phase().stems);
    });
    connect(&m_close, &QAbstractButton::clicked, this, &SeparationNotice::dismiss);
    connect(&separator, &StemSeparator::phaseChanged, this, [this] {
        m_isDismissed = m_isSheetOpen && !m_separator.isRunning();
        sync();
        if (isVisible() && !m_separator.isRunning()) {
            QAccessibleEvent alert(this, QAccessible::Alert);
            QAccessible::updateAccessibility(&alert);
        }
    });
    connect(&separator, &StemSeparator::separationProgressChanged, this, &SeparationNotice::sync);
    sync();
}

void SeparationNotice::setSheetOpen(bool isOpen)
{
    m_isSheetOpen = isOpen;
    if (!m_separator.isRunning())
        m_isDismissed = true;
    sync();
}

void SeparationNotice::dismiss()
{
    m_isDismissed = true;
    sync();
}

void SeparationNotice::sync()
{
    const StemSeparationPhase& phase = m_separator.phase();
    const QString song = fileName(m_separator.fileURL());
    const bool isUsable = phase.kind == Kind::complete && m_handlers.canUse();
    std::optional<int> percent;
    switch (phase.kind) {
    case Kind::idle:
        break;
    case Kind::installingEnvironment:
        setSentence(tr("Setting up stem separation…"));
        break;
    case Kind::separating:
        percent = static_cast<int>(std::lround(100 * m_separator.separationProgress().value_or(0)));
        setSentence(tr("Separating “%1”: %2%").arg(song).arg(*percent));
        break;
    case Kind::cancelling:
        setSentence(tr("Cancelling…"));
        break;
    case Kind::failed:
        setSentence(QString::fromStdString(phase.message).simplified());
        break;
    case Kind::complete:
        setSentence(isUsable ? tr("The stems of “%1” are ready.").arg(song)
                             : tr("The stems of “%1” are ready: they play when it is opened again.").arg(song));
        break;
    }
    setProgress(percent);
    m_show.setVisible(phase.isRunning());
    m_cancel.setVisible(phase.isRunning() && phase.kind != Kind::cancelling);
    m_use.setVisible(isUsable);
    m_close.setVisible(!phase.isRunning());
    setVisible(!m_isSheetOpen && phase.kind != Kind::idle && (phase.isRunning() || !m_isDismissed));
}

}  // namespace quillet
