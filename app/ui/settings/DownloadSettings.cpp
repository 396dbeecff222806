#include "app/ui/settings/DownloadSettings.h"

#include "app/ui/controls/Label.h"

#include <QHBoxLayout>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace quillet {

DownloadSettings::DownloadSettings(const Services& services, QWidget* parent)
    : QWidget(parent),
      m_services(services),
      m_folder(new FolderRow(services.theme, tr("Download folder"),
                             { [this](const FilePath& folder) {
                                  m_services.downloads.defaults.setString(DownloadSettingsStore::directoryKey, folder.native());
                                  showDirectory();
                              },
                               [this] {
                                   m_services.downloads.defaults.remove(DownloadSettingsStore::directoryKey);
                                   showDirectory();
                               } })),
      m_version(new Label(services.theme, Label::Role::number, {})),
      m_words(new Label(services.theme, Label::Role::secondary, {})),
      m_update(new QPushButton(tr("Update"))),
      m_undo(new QPushButton(tr("Undo")))
{
    m_update->setAccessibleName(tr("Update yt-dlp"));
    m_update->setToolTip(tr("Fetches the newest yt-dlp: sites change, and an old one cannot read them any more"));
    m_undo->setAccessibleName(tr("Undo the update of yt-dlp"));
    m_undo->setToolTip(tr("Goes back to the yt-dlp that came with Quillet"));
    auto* row = new QHBoxLayout;
    row->addWidget(new Label(services.theme, Label::Role::text, QStringLiteral("yt-dlp")));
    row->addStretch(1);
    row->addWidget(m_version);
    for (QPushButton* button : { m_update, m_undo }) {
        button->setAutoDefault(false);
        row->addWidget(button);
    }
    m_words->setWordWrap(true);
    m_words->setAlignment(Qt::AlignRight);
    m_words->hide();
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(12);
    column->addWidget(m_folder);
    column->addLayout(row);
    column->addWidget(m_words);
    connect(m_update, &QAbstractButton::clicked, this, &DownloadSettings::fetchNewest);
    connect(m_undo, &QAbstractButton::clicked, this, [this] {
        m_services.updater.undo([self = QPointer(this)](const YtDlpUpdater::Outcome& outcome) {
            if (self)
                self->showOutcome(outcome);
        });
    });
}

void DownloadSettings::fetchNewest()
{
    m_words->setText(tr("The newest yt-dlp is being fetched…"));
    m_words->show();
    m_services.updater.update([self = QPointer(this)](const YtDlpUpdater::Outcome& outcome) {
        if (self)
            self->showOutcome(outcome);
    });
    sync();
}

void DownloadSettings::loadCurrentSettings()
{
    showDirectory();
    sync();
    m_services.background.run(
        [releases = m_services.updater.releases(), &scheduler = m_services.scheduler, self = QPointer(this)] {
            scheduler.post([self, present = releases.present()] {
                if (!self)
                    return;
                self->m_hasUpdate = present.isUpdate;
                self->m_version->setText(QString::fromStdString(present.version));
                self->sync();
            });
        });
}

void DownloadSettings::showDirectory() { m_folder->setFolder(m_services.downloads.downloadDirectory()); }

void DownloadSettings::showOutcome(const YtDlpUpdater::Outcome& outcome)
{
    if (outcome) {
        m_hasUpdate = outcome->isUpdate;
        const QString version = QString::fromStdString(outcome->version);
        m_version->setText(version);
        m_words->setText(outcome->isUpdate
                             ? tr("From now on songs are fetched with yt-dlp %1.").arg(version)
                             : tr("The yt-dlp that came with Quillet is used. There is no newer one, or it was undone."));
    } else {
        m_words->setText(QString::fromStdString(outcome.error()));
    }
    m_words->show();
    sync();
}

void DownloadSettings::sync()
{
    m_update->setEnabled(!m_services.updater.isRunning());
    m_undo->setEnabled(m_hasUpdate && !m_services.updater.isRunning());
}

}  // namespace quillet
