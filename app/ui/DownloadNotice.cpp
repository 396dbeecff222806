#include "app/ui/DownloadNotice.h"

#include "app/ui/FileNames.h"

#include <QAccessible>
#include <QPushButton>

namespace quillet {

DownloadNotice::DownloadNotice(const ThemeSource& source, std::shared_ptr<RunningDownload> download,
                               std::function<void(const FilePath& file)> open, QWidget* parent)
    : Notice(source, {}, parent),
      m_download(std::move(download)),
      m_open(std::move(open))
{
    m_download->setListener({ [this] { showProgress(); }, [this](const auto& outcome) { showEnd(outcome); } });
    showProgress();
}

DownloadNotice::~DownloadNotice() { m_download->setListener({}); }

void DownloadNotice::showProgress() { setSentence(tr("The download goes on: %1").arg(m_download->words())); }

void DownloadNotice::showEnd(const URLDownloader::Outcome& outcome)
{
    if (outcome) {
        QPushButton& open = addButton(tr("Open"));
        connect(&open, &QAbstractButton::clicked, this, [this, file = *outcome] {
            m_open(file);
            deleteLater();
        });
        setSentence(tr("“%1” has been downloaded.").arg(fileName(*outcome)));
    } else {
        setSentence(QString::fromStdString(outcome.error().description()).simplified());
    }
    QPushButton& close = addButton(tr("Close"));
    connect(&close, &QAbstractButton::clicked, this, &QObject::deleteLater);
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

}  // namespace quillet
