// The content of the main window: the toolbar, and one of three screens by what is being loaded. It carries out the commands
// that concern the window, takes drops, and shows the open panel, the sheets, errors and notices. How a file is opened is
// FileLoader's business, what playing means AppState's.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/CommandCenter.h"
#include "app/core/FileLoader.h"
#include "app/core/FollowChoice.h"
#include "app/core/Hints.h"
#include "app/core/KeyMap.h"
#include "app/core/SongOpener.h"
#include "app/download/DownloadSettingsStore.h"
#include "app/download/URLDownloader.h"
#include "app/download/YtDlpUpdater.h"
#include "app/stems/StemSeparator.h"
#include "app/ui/DropOverlay.h"
#include "app/ui/FilePanel.h"
#include "app/ui/ThemeSource.h"
#include "platform/defaults/DefaultsDomain.h"
#include "platform/defaults/DefaultsHealth.h"
#include "platform/media/AmplitudeReader.h"
#include "platform/media/AudioEncoder.h"
#include "platform/update/Updater.h"

#include <QPointer>
#include <QWidget>

#include <optional>
#include <stop_token>
#include <string>
#include <vector>

class QDialog;
class QStackedLayout;
class QVBoxLayout;

namespace quillet {

class ExportFlow;
struct FlowHost;
class HelpSheet;
class KeyResponderView;
class LoopFileFlow;
class Notice;
class OpenFromURLSheet;
class PlayerScreen;
class SearchNotice;
class SettingsNotice;
class SettingsWindow;
class StemSeparationFlow;
class ToolBar;
class UpdateFlow;

class ContentView final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the view.
    struct Services {
        AppState& state;
        FileLoader& loader;
        CommandCenter& commands;
        RecentFilesStore& recentFiles;
        URLDownloader& downloader;
        YtDlpUpdater& ytDlpUpdater;
        StemSeparator& separator;
        StemSessionStore& stemSessions;
        StemMixStore& stemMixes;
        AudioFileOpener& audioFiles;
        AudioEncoderMaker& encoders;
        WaveformCache& waveformCache;
        SettingsStore& settings;
        StemSettingsStore& stemSettings;
        Updater& updater;
        BackgroundRunner& background;
        Scheduler& scheduler;
        DownloadSettingsStore& downloadSettings;
        const ThemeSource& theme;
        /// Keeps what the window remembers.
        DefaultsDomain& defaults;
        KeyMap& keys;
        FollowChoice& follow;
        AmplitudeReaderOpener& amplitudes;
        /// The end of the program, for what is read until then.
        std::stop_token programEnds = {};
        SongList& songs;
        Hints& hints;
    };

    explicit ContentView(const Services& services, QWidget* parent = nullptr);
    ~ContentView() override;
    ContentView(const ContentView&) = delete;
    ContentView& operator=(const ContentView&) = delete;

    /// Opens a file in place of the present one.
    void loadFile(const FilePath& url, RestoreSettings restoreSettings);
    /// Opens files and folders, at least one: several songs are a list to go through.
    void open(const std::vector<FilePath>& paths) { m_opener.open(paths); }
    /// Asks for files.
    void openFile();
    /// Asks for a web address.
    void openFromURL();
    void showSettings();
    /// At the choice of the language, in the place where another view's stood.
    void showLanguageSettings(const QRect& place);
    /// Of the settings' window, which is open.
    [[nodiscard]] QRect settingsPlace() const;
    /// Says so, later, if there is a newer version, and nothing else.
    void checkForUpdatesInBackground();
    /// One sentence in an alert over the window.
    void showError(const QString& message);
    /// Says under the toolbar, for as long as it is so, that nothing can be heard.
    void setHeard(bool isHeard);
    /// Says so if the settings cannot be saved.
    void setSettingsHealth(const DefaultsHealth& health);
    /// Plays or pauses if the event is a press of the space bar; whether it is.
    bool takeSpace(const QKeyEvent& event);

Q_SIGNALS:
    /// The user has chosen another language, and nothing is lost if the view is made again to speak it.
    void languageChosen();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    [[nodiscard]] FlowHost flowHost();
    void addLastingNotices();
    void subscribe();
    void showScreen();
    void refuse(const FilePath& path);
    void sayThatFolderIsEmpty(const FilePath& folder);
    [[nodiscard]] bool changeLanguage();
    void openSheet(QDialog& sheet);
    [[nodiscard]] QDialog* frontSheet() const;
    void activateSheet();
    void syncShade();
    void closeOpenFromURL();
    void syncHelp();

    Services m_services;
    ToolBar* m_toolBar;
    QStackedLayout* m_screens;
    PlayerScreen* m_player = nullptr;
    /// What is to be said under the toolbar.
    QVBoxLayout* m_notices;
    /// Those that are always there, shown or not.
    int m_lastingNotices = 0;
    Notice* m_silenceNotice;
    SettingsNotice* m_settingsNotice;
    SearchNotice* m_searchNotice;
    DropOverlay* m_overlay;
    /// Dims the window under a sheet.
    QWidget* m_shade;
    KeyResponderView* m_keys;
    SongOpener m_opener;
    StemSeparationFlow* m_stems;
    ExportFlow* m_export;
    LoopFileFlow* m_loopFiles;
    UpdateFlow* m_updates;
    SettingsWindow* m_settings = nullptr;
    QPointer<HelpSheet> m_help;
    QPointer<OpenFromURLSheet> m_openFromURL;
    QPointer<FilePanel> m_openPanel;
    /// Those that exist, in the order in which they were opened.
    std::vector<QDialog*> m_sheets;
    std::vector<Notifications::Subscription> m_subscriptions;
};

}  // namespace quillet
