#include "app/ui/UpdateFlow.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QPushButton>
#include <QTextDocumentFragment>
#include <QUrl>

#include <cmath>
#include <utility>

namespace quillet {
namespace {

constexpr qsizetype maxShownNotes = 2000;

/// As plain text, whatever it was: nothing in it acts.
QString shownNotes(const Release& release)
{
    QString notes = QString::fromStdString(release.notes);
    if (notes.contains(QLatin1Char('<')))
        notes = QTextDocumentFragment::fromHtml(notes).toPlainText();
    notes = notes.trimmed();
    return notes.size() <= maxShownNotes ? notes : notes.left(maxShownNotes) + QStringLiteral("…");
}

class UpdateNotice final : public Notice {
public:
    UpdateNotice(const ThemeSource& source, const Release& release)
        : Notice(source, UpdateFlow::tr("Quillet %1 is available.").arg(QString::fromStdString(release.version)))
    {
        if (!release.page.empty())
            connect(&addButton(UpdateFlow::tr("Download Page")), &QAbstractButton::clicked, this,
                    [page = QString::fromStdString(release.page)] { QDesktopServices::openUrl(QUrl(page)); });
        connect(&addButton(UpdateFlow::tr("Close")), &QAbstractButton::clicked, this, &QObject::deleteLater);
    }
};

}  // namespace

UpdateFlow::UpdateFlow(const Services& services, std::function<void(Notice& notice)> addNotice, QObject* parent)
    : QObject(parent),
      m_services(services),
      m_addNotice(std::move(addNotice))
{
}

void UpdateFlow::noteCheck() { m_services.defaults.setReal(lastCheckKey, m_services.date()); }

void UpdateFlow::checkForUpdates(QWidget& window, const std::function<void(QDialog& sheet)>& open)
{
    if (m_sheet)
        m_sheet->close();
    m_sheet =
        new QMessageBox(QMessageBox::NoIcon, tr("Check for Updates"), tr("Checking for updates…"), QMessageBox::Close, &window);
    m_sheet->setAttribute(Qt::WA_DeleteOnClose);
    m_sheet->setWindowModality(Qt::WindowModal);
    m_sheet->setTextFormat(Qt::PlainText);
    m_services.updater.checkForUpdates([this](const Updater::Answer& answer) {
        noteCheck();
        if (m_sheet)
            showAnswer(answer);
    });
    open(*m_sheet);
}

void UpdateFlow::showAnswer(const Updater::Answer& answer)
{
    if (answer && *answer) {
        showRelease(**answer);
        return;
    }
    m_sheet->setText(answer ? tr("Quillet %1 is the newest version.").arg(QCoreApplication::applicationVersion())
                            : QString::fromStdString(answer.error()));
}

void UpdateFlow::showRelease(const Release& release)
{
    m_sheet->setText(tr("Quillet %1 is available. You have %2.")
                         .arg(QString::fromStdString(release.version), QCoreApplication::applicationVersion()));
    m_sheet->setInformativeText(shownNotes(release));
    if (release.page.empty())
        return;
    QPushButton* page = m_sheet->addButton(tr("Download Page"), QMessageBox::AcceptRole);
    m_sheet->setDefaultButton(page);
    connect(page, &QAbstractButton::clicked, this,
            [address = QString::fromStdString(release.page)] { QDesktopServices::openUrl(QUrl(address)); });
}

void UpdateFlow::checkForUpdatesInBackground()
{
    const auto last = m_services.defaults.real(lastCheckKey);
    // A clock that was set back asks too.
    if (!m_services.updater.isConfigured() || (last && std::abs(m_services.date() - *last) < secondsBetweenChecks))
        return;
    m_services.updater.checkForUpdates([this](const Updater::Answer& answer) {
        noteCheck();
        if (answer && *answer)
            m_addNotice(*new UpdateNotice(m_services.theme, **answer));
    });
}

}  // namespace quillet
