#include "app/ui/DownloadNotice.h"

#include "app/ui/FileNames.h"

#include <QAccessible>
#include <QPushButton>

namespace quillet {

DownloadNotice::DownloadNotice(const ThemeSource& source, std::unique_ptr<RunningDownload> download,
                               std::function<void(const FilePath& file)> open, QWidget* parent)
    : Notice(source, {}, parent),
      m_download(std::move(download)),
      m_open(std::move(open)),
      m_stop(addButton(tr("Stop")))
{
    connect(&m_stop, &QAbstractButton::clicked, this, &DownloadNotice::stop);
    m_download->setListener({ [this] { showProgress(); }, [this](const auto& outcome) { showEnd(outcome); } });
    showProgress();
}

void DownloadNotice::showProgress()
{
    setSentence(tr("The download goes on: %1").arg(m_download->words()));
    setProgress(m_download->percent());
}

void DownloadNotice::stop()
{
    m_download->stop();
    setSentence(tr("The download was stopped. Opening the same address again resumes it."));
    offerDiscard();
    offerClose();
}

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
        setSentence(errorText(outcome.error()).simplified());
        if (outcome.error().kind == DownloadError::Kind::processFailed)
            offerDiscard();
    }
    offerClose();
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void DownloadNotice::offerDiscard()
{
    QPushButton& discard = addButton(tr("Discard"));
    discard.setToolTip(tr("Removes what has been received so far"));
    connect(&discard, &QAbstractButton::clicked, this, [this] {
        m_download->discard();
        deleteLater();
    });
}

void DownloadNotice::offerClose()
{
    setProgress({});
    m_stop.hide();
    QPushButton& close = addButton(tr("Close"));
    connect(&close, &QAbstractButton::clicked, this, &QObject::deleteLater);
}

}  // namespace quillet
