#include "app/ui/StemSeparationFlow.h"

#include "app/export/OutputFile.h"
#include "app/stems/StemExport.h"
#include "app/ui/ClosableNotice.h"
#include "app/ui/ExportNotice.h"
#include "app/ui/FileNames.h"
#include "app/ui/FilePanel.h"
#include "app/ui/Questions.h"

#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

#include <utility>

namespace quillet {

StemSeparationFlow::StemSeparationFlow(const Services& services, FlowHost host)
    : m_services(services),
      m_host(std::move(host)),
      m_notice(new SeparationNotice(services.theme, services.separator,
                                    { [this] { showSheet(); },
                                      [this](const StemFolder::Stems& stems) { m_services.loader.activateStemMode(stems); },
                                      [this] { return isSongOpen(); } }))
{
    m_host.addNotice(*m_notice);
    connect(&services.separator, &StemSeparator::phaseChanged, this, &StemSeparationFlow::takePhase);
    connect(&services.state, &AppState::loadingStateChanged, m_notice, &SeparationNotice::sync);
}

bool StemSeparationFlow::isSongOpen() const
{
    return m_services.state.isLoaded() && m_services.state.audioFileURL() == m_services.separator.fileURL();
}

void StemSeparationFlow::showSheet()
{
    const auto& song = m_services.state.audioFileURL();
    if (m_sheet) {
        m_sheet->raise();
        m_sheet->activateWindow();
        return;
    }
    // The one that runs may be that of another song.
    const bool isRunning = m_services.separator.isRunning();
    if (!isRunning && (!song || !m_services.state.isLoaded()))
        return;
    m_sheet = new StemSeparationSheet(isRunning ? m_services.separator.fileURL() : *song,
                                      { m_services.separator, m_services.background, m_services.scheduler, m_services.theme },
                                      { [this](const StemFolder::Stems& stems) {
                                           closeSheet();
                                           if (isSongOpen())
                                               m_services.loader.activateStemMode(stems);
                                       },
                                        [this] { closeSheet(); } },
                                      &m_host.window);
    connect(m_sheet, &StemSeparationSheet::isInFrontChanged, this, &StemSeparationFlow::isInFrontChanged);
    m_notice->setSheetOpen(true);
    if (isRunning)
        m_sheet->setWindowModality(Qt::NonModal);
    m_host.openSheet(*m_sheet);
}

void StemSeparationFlow::closeSheet()
{
    if (!m_sheet)
        return;
    // It lives on for a moment, and must not act any more.
    m_services.separator.disconnect(m_sheet);
    m_sheet->hide();
    m_sheet->deleteLater();
    m_sheet = nullptr;
    m_notice->setSheetOpen(false);
    Q_EMIT isInFrontChanged(false);
}

/// The stems of a song that is not open are kept for when it is.
void StemSeparationFlow::takePhase()
{
    const StemSeparationPhase& phase = m_services.separator.phase();
    if (phase.kind != StemSeparationPhase::Kind::complete)
        return;
    if (!isSongOpen())
        m_services.background.run([&sessions = m_services.sessions, session = StemSession::fromSeparation(phase.stems),
                                   song = m_services.separator.fileURL()] { sessions.save(session, song); });
    m_services.commands.execute(CommandId::stemFilesCreated, m_services.separator.fileURL());
}

void StemSeparationFlow::confirmCleanup()
{
    m_host.openSheet(*makeQuestion(m_host.window,
                                   { tr("Delete separated stem files for this track?"),
                                     tr("They can be recreated by running separation again."), tr("Delete Stems"), true },
                                   [this] { cleanupCurrentTrackStems(); }));
}

void StemSeparationFlow::cleanupCurrentTrackStems()
{
    const auto song = m_services.state.audioFileURL();
    if (!song)
        return;
    m_services.state.exitStemMode();
    m_services.background.run([folder = m_services.separator.folderOf(*song), &sessions = m_services.sessions,
                               &mixes = m_services.mixes, song = *song] {
        folder.remove();
        sessions.remove(song);
        mixes.remove(song);
    });
    m_services.commands.execute(CommandId::stemFilesDeleted, song);
}

// ---- Export ----

void StemSeparationFlow::askWhatToExport()
{
    if (!m_services.state.stemSession())
        return;
    auto* question = new QMessageBox(QMessageBox::NoIcon, tr("Export Stems"), tr("What would you like to export?"),
                                     QMessageBox::Cancel, &m_host.window);
    question->setInformativeText(
        tr("The stems are copied as they are. The mix is one file in which each stem is as loud as you "
           "hear it now, at the song’s own speed and pitch."));
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setWindowModality(Qt::WindowModal);
    const auto offer = [this, question](const QString& title, Export what) {
        connect(question->addButton(title, QMessageBox::AcceptRole), &QAbstractButton::clicked, this,
                [this, what] { chooseExportFolder(what); });
    };
    offer(tr("Stems…"), Export::stems);
    offer(tr("Mix…"), Export::mix);
    m_host.openSheet(*question);
}

void StemSeparationFlow::chooseExportFolder(Export what)
{
    const FilePath music = pathOf(QStandardPaths::writableLocation(QStandardPaths::MusicLocation));
    // It goes with the window, as the flow does.
    new FilePanel(
        m_host.window, { tr("Export Stems"), music, true, tr("Export"), {} },
        [this, what](const std::vector<FilePath>& folders) { exportTo(folders.front(), what); }, m_host.openSheet);
}

void StemSeparationFlow::exportTo(const FilePath& folder, Export what)
{
    // Another song may have been opened meanwhile.
    const auto& session = m_services.state.stemSession();
    if (!session)
        return;
    StemFolder::Stems stems;
    for (const StemSession::Stem& stem : session->stems)
        stems[stem.key] = stem.fileURL;
    if (what == Export::stems) {
        exportStemsTo(folder, stems);
        return;
    }
    RenderOptions mix;
    mix.playback.input = *m_services.state.audioFileURL();
    mix.playback.stems = std::move(stems);
    mix.playback.stemVolumes.emplace();
    for (const StemSession::Stem& stem : session->stems)
        (*mix.playback.stemVolumes)[stem.key] = m_services.state.stemMix().heardVolume(stem, *session);
    m_services.background.run([&scheduler = m_services.scheduler, self = std::weak_ptr(m_self), mix, folder]() mutable {
        mix.output = freeName(folder / (mix.playback.input.stem().native() + " Mix.wav"));
        scheduler.post([self, mix] {
            if (const auto flow = self.lock())
                (*flow)->exportMix(mix);
        });
    });
}

void StemSeparationFlow::exportMix(const RenderOptions& mix)
{
    const BackgroundRender::Services services{ m_services.media, m_services.background, m_services.scheduler };
    m_host.addNotice(*new ExportNotice(m_services.theme, services, mix));
}

void StemSeparationFlow::exportStemsTo(const FilePath& folder, const StemFolder::Stems& stems)
{
    auto* notice = new ClosableNotice(m_services.theme, tr("Copying the stems…"));
    m_host.addNotice(*notice);
    m_services.background.run([&scheduler = m_services.scheduler, self = std::weak_ptr(m_self), notice = QPointer(notice),
                               stems, folder, song = *m_services.state.audioFileURL()] {
        scheduler.post([self, notice, outcome = exportStems(stems, song, folder)] {
            if (self.lock() && notice)
                notice->setSentence(outcome ? tr("The stems are in “%1”.").arg(pathText(*outcome))
                                            : QString::fromStdString(outcome.error()));
        });
    });
}

}  // namespace quillet
