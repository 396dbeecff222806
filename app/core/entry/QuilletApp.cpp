#include "app/core/entry/QuilletApp.h"

#include "AppCore/SharedInstance.h"
#include "AppCore/StemSettingsStore.h"
#include "app/core/FileLoader.h"
#include "app/core/keyboard/KeyHandler.h"
#include "app/desktop/MprisPlayer.h"
#include "app/desktop/SleepInhibitor.h"
#include "app/desktop/WindowActivation.h"
#include "app/download/DownloadSettingsStore.h"
#include "app/download/URLDownloader.h"
#include "app/download/UnfinishedDownloads.h"
#include "app/download/YtDlpUpdater.h"
#include "app/ui/FilePanel.h"
#include "app/ui/MainWindow.h"
#include "app/ui/QuilletStyle.h"
#include "app/ui/Symbol.h"
#include "app/ui/Translations.h"
#include "app/ui/controls/CheckableAccess.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/settings/UpdateSettings.h"
#include "platform/audio/CubebOutputDevice.h"
#include "platform/audio/LiveOutput.h"
#include "platform/audio/NullOutputDevice.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/defaults/SqliteDefaultsDomain.h"
#include "platform/files/ProgramDirectories.h"
#include "platform/files/SystemFileAttributes.h"
#include "platform/files/UserDirectories.h"
#include "platform/media/MediaModule.h"
#include "platform/process/Interruption.h"
#include "platform/process/QtProcessRunner.h"
#include "platform/schedule/QtRealtimeKit.h"
#include "platform/schedule/QtScheduler.h"
#include "platform/schedule/ThreadRunner.h"
#include "platform/update/AppcastUpdater.h"

#include <QApplication>
#include <QDBusConnection>
#include <QToolTip>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <stop_token>
#include <thread>

namespace quillet {
namespace {

/// How long the end of the program waits for work that reads disks.
constexpr double finalTimeoutSeconds = 1;
/// After the start of the program, which other things are more urgent for.
constexpr double sweepDelaySeconds = 5;
constexpr double updateDelaySeconds = 10;

/// The toolkit ends the program with `exit` when it loses the display.
AppState* stateToSave = nullptr;

void saveAtExit()
{
    if (stateToSave != nullptr)
        stateToSave->saveSettingsNow();
}

class QuilletApp {
public:
    QuilletApp()
        : m_state(std::make_shared<AppState>(
              m_scheduler, SettingsSaver::Stores{ m_settings, m_ownStemSessions, m_ownStemMixes, m_practices }, m_engine))
    {
        m_engine.setAppState(m_state);
        m_translations.install(Translations::chosen(m_defaults));
        const auto applyTheme = [this] {
            QApplication::setPalette(m_style->standardPalette());
            QToolTip::setPalette(m_style->standardPalette());
        };
        QApplication::setStyle(m_style);
        QApplication::setFont(controlFont());
        installCheckableAccess();
        applyTheme();
        QObject::connect(&m_theme, &ThemeSource::themeChanged, &m_theme, applyTheme);
        m_keys.start(m_state, m_commands);
        QObject::connect(qGuiApp, &QGuiApplication::commitDataRequest, m_state.get(), &AppState::saveSettingsNow);
        stateToSave = m_state.get();
        std::atexit(saveAtExit);
        // The end of the session, or Ctrl-C: it ends with everything saved.
        m_interruptions = m_scheduler.watch(m_interruption.descriptor(), [this] {
            m_interruption.acknowledge();
            QApplication::quit();
        });
    }

    void show(const std::vector<FilePath>& files, SingleInstance& instance)
    {
        m_window.show();
        // What is not needed for the first sight of the window comes after it.
        m_scheduler.post([this, files, &instance] {
            m_window.populate();
            open(files);
            instance.listen(m_scheduler, [this](const HandOver& handOver) { take(handOver); });
            joinDesktop();
            m_graph.onOutputChange(
                [this](AudioOutput::State state) { m_window.setHeard(state == AudioOutput::State::device); });
            m_graph.start();
            watchSettings();
            m_background.run([this] { m_media.preload(); });
            m_sweep = m_scheduler.after(sweepDelaySeconds, [this] { sweepDownloads(); });
            m_updateCheck = m_scheduler.after(updateDelaySeconds, [this] { m_window.content().checkForUpdatesInBackground(); });
        });
    }

    /// True if all work has ended, and everything can be taken apart.
    [[nodiscard]] bool finish()
    {
        m_keys.stop();
        m_processes.endAll();
        m_engine.stop();
        m_state->saveSettingsNow();
        stateToSave = nullptr;
        m_programEnds.request_stop();
        const bool isSilent = m_output.finish(finalTimeoutSeconds);
        return m_background.finish(finalTimeoutSeconds) && isSilent;
    }

private:
    /// As if the window had been opened for it.
    void take(const HandOver& handOver)
    {
        bringToFront(*m_window.windowHandle(), { handOver.activationToken, handOver.startupId });
        open(handOver.files);
    }

    void open(const std::vector<FilePath>& files)
    {
        if (!files.empty())
            m_window.content().open(files);
    }

    /// To connect to the bus is to wait for it, which may be for ever.
    void joinDesktop()
    {
        m_background.run([this] {
            if (QDBusConnection::sessionBus().isConnected())
                m_scheduler.post([this] { meetDesktop(QDBusConnection::sessionBus()); });
        });
    }

    void meetDesktop(const QDBusConnection& bus)
    {
        m_theme.followDesktop();
        FilePanel::joinDesktop(bus);
        m_mpris.emplace(
            MprisPlayer::Services{ *m_state, m_songs, m_commands, m_scheduler, m_background },
            MprisPlayer::Window{ [this] { bringToFront(*m_window.windowHandle(), {}); }, [this] { m_window.close(); },
                                 [this](const FilePath& file) { m_window.content().loadFile(file, RestoreSettings::no); } },
            bus);
        m_sleepInhibitor.emplace(*m_state, bus);
    }

    void sweepDownloads()
    {
        m_background.run([downloads = UnfinishedDownloads(m_downloadSettings.downloadDirectory())] {
            downloads.sweep(std::chrono::system_clock::now());
        });
    }

    [[nodiscard]] QString updateFeed() const
    {
        return QString::fromStdString(m_defaults.string(UpdateSettings::feedKey).value_or(QUILLET_UPDATE_FEED)).trimmed();
    }

    /// Both of the file's connections may notice that it cannot be written.
    void watchSettings()
    {
        for (SqliteDefaultsDomain* domain : { &m_defaults, &m_cacheDefaults })
            domain->onHealthChange([this](const DefaultsHealth&) { m_scheduler.post([this] { showSettingsHealth(); }); });
    }

    void showSettingsHealth()
    {
        DefaultsHealth health = m_defaults.health();
        const DefaultsHealth other = m_cacheDefaults.health();
        if (health.trouble == DefaultsHealth::Trouble::none)
            health.trouble = other.trouble;
        if (!health.movedAside)
            health.movedAside = other.movedAside;
        m_window.setSettingsHealth(health);
    }

    /// What was fetched in place of what came with the program.
    [[nodiscard]] static FilePath toolsDirectory() { return dataDirectory() / "yt-dlp"; }
    [[nodiscard]] static int cores() { return std::max(1, static_cast<int>(std::thread::hardware_concurrency())); }

    QtScheduler m_scheduler;
    Interruption m_interruption;
    ScheduledTask m_interruptions;
    std::stop_source m_programEnds;
    // The cache has a connection of its own: the main thread never waits for what it does.
    SqliteDefaultsDomain m_defaults{ SqliteDefaultsDomain::standardFile() };
    Translations m_translations;
    SqliteDefaultsDomain m_cacheDefaults{ SqliteDefaultsDomain::standardFile() };
    SettingsStore m_settings{ m_defaults };
    PracticeStore m_practices{ m_defaults };
    RecentFilesStore m_recentFiles{ m_cacheDefaults };
    StemSessionStore m_stemSessions{ m_cacheDefaults };
    StemMixStore m_stemMixes{ m_cacheDefaults };
    PracticeStore m_practicesToLoad{ m_cacheDefaults };
    // The main thread's.
    StemSessionStore m_ownStemSessions{ m_defaults };
    StemMixStore m_ownStemMixes{ m_defaults };
    StemSettingsStore m_stemSettings{ m_defaults };
    SystemFileAttributes m_attributes;
    WaveformCache m_waveformCache{ m_cacheDefaults, m_attributes };
    MediaModule m_media;
    QtRealtimeKit m_realtimeKit{ realtimeRequests() };
    LiveOutput m_output{ std::make_unique<CubebOutputDevice>(), std::make_unique<NullOutputDevice>(), m_scheduler };
    PlaybackGraph m_graph{ m_output, m_scheduler };
    AudioEngine m_engine{ m_graph, m_scheduler };
    const SharedInstance<AudioEngine> m_sharedEngine{ m_engine };
    const SharedInstance<SettingsStore> m_sharedSettings{ m_settings };
    const SharedInstance<RecentFilesStore> m_sharedRecentFiles{ m_recentFiles };
    const SharedInstance<StemSessionStore> m_sharedStemSessions{ m_stemSessions };
    const SharedInstance<StemSettingsStore> m_sharedStemSettings{ m_stemSettings };
    const SharedInstance<WaveformCache> m_sharedWaveformCache{ m_waveformCache };
    std::shared_ptr<AppState> m_state;
    // Its jobs use what is above.
    ThreadRunner m_background;
    FileLoader m_loader{ { *m_state,
                           m_scheduler,
                           m_background,
                           m_media.audioFiles(),
                           { m_media.amplitudeReaders(), cores(), m_programEnds.get_token() },
                           m_waveformCache,
                           m_settings,
                           m_stemSessions,
                           m_recentFiles,
                           m_stemMixes,
                           m_attributes,
                           m_practicesToLoad } };
    QtProcessRunner m_processes;
    URLDownloader m_downloader{ m_processes, m_background, executableDirectory(), toolsDirectory() };
    YtDlpUpdater m_ytDlpUpdater{ { m_processes, m_background, m_scheduler, executableDirectory(), resourcesDirectory() },
                                 { executableDirectory(), toolsDirectory() } };
    DownloadSettingsStore m_downloadSettings{ m_defaults };
    StemSeparator m_separator{ { m_processes, m_background, m_scheduler, m_stemSettings, m_attributes, executableDirectory(),
                                 resourcesDirectory() } };
    const SharedInstance<StemSeparator> m_sharedSeparator{ m_separator };
    ScheduledTask m_sweep;
    AppcastUpdater m_updater{ [this] { return updateFeed(); }, QVersionNumber::fromString(QStringLiteral(QUILLET_VERSION)) };
    ScheduledTask m_updateCheck;
    const SharedInstance<URLDownloader> m_sharedDownloader{ m_downloader };
    const SharedInstance<DownloadSettingsStore> m_sharedDownloadSettings{ m_downloadSettings };
    Notifications m_notifications;
    SongList m_songs{ *m_state };
    CommandCenter m_commands{ *m_state, m_notifications };
    Hints m_hints{ *m_state, m_commands, m_defaults };
    KeyMap m_keyMap{ m_defaults };
    FollowChoice m_follow{ m_defaults };
    KeyHandler m_keys{ m_scheduler, m_keyMap };
    ThemeSource m_theme;
    /// The application's.
    QuilletStyle* m_style = new QuilletStyle(m_theme);
    MainWindow m_window{ { *m_state,
                           m_loader,
                           m_commands,
                           m_recentFiles,
                           m_downloader,
                           m_ytDlpUpdater,
                           m_separator,
                           m_stemSessions,
                           m_stemMixes,
                           m_media.audioFiles(),
                           m_media.encoders(),
                           m_waveformCache,
                           m_settings,
                           m_stemSettings,
                           m_updater,
                           m_background,
                           m_scheduler,
                           m_downloadSettings,
                           m_theme,
                           m_defaults,
                           m_keyMap,
                           m_follow,
                           m_media.amplitudeReaders(),
                           m_programEnds.get_token(),
                           m_songs,
                           m_hints },
                         m_translations };
    // Once there is a session bus.
    std::optional<MprisPlayer> m_mpris;
    std::optional<SleepInhibitor> m_sleepInhibitor;
};

}  // namespace

int runWindow(int& argumentCount, char** arguments, const std::vector<FilePath>& files, SingleInstance& instance)
{
    QApplication application(argumentCount, arguments);
    QApplication::setApplicationName(QStringLiteral("quillet"));
    QApplication::setApplicationDisplayName(QStringLiteral("Quillet"));
    QApplication::setApplicationVersion(QStringLiteral(QUILLET_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.quillet.Quillet"));
    QApplication::setWindowIcon(applicationIcon());
    auto program = std::make_unique<QuilletApp>();
    program->show(files, instance);
    const int status = QApplication::exec();
    // What it still has to do is no reason to keep another start waiting.
    instance.release();
    if (!program->finish()) {
        // A disk or a sound server that does not answer keeps a thread: what it may still touch is left alone.
        std::_Exit(status);
    }
    return status;
}

}  // namespace quillet
