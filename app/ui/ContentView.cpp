#include "app/ui/ContentView.h"

#include "app/core/SupportedAudio.h"
#include "app/core/keyboard/KeyResponderView.h"
#include "app/ui/DownloadNotice.h"
#include "app/ui/DroppedFiles.h"
#include "app/ui/EmptyScreen.h"
#include "app/ui/ExportFlow.h"
#include "app/ui/FileNames.h"
#include "app/ui/FlowHost.h"
#include "app/ui/HelpSheet.h"
#include "app/ui/HintNotice.h"
#include "app/ui/LevelNotice.h"
#include "app/ui/LoadingScreen.h"
#include "app/ui/LoopFileFlow.h"
#include "app/ui/OfferNotice.h"
#include "app/ui/OpenFromURLSheet.h"
#include "app/ui/PlayerScreen.h"
#include "app/ui/Questions.h"
#include "app/ui/SearchNotice.h"
#include "app/ui/SettingsNotice.h"
#include "app/ui/SongStrip.h"
#include "app/ui/StemSeparationFlow.h"
#include "app/ui/Symbol.h"
#include "app/ui/ToolBar.h"
#include "app/ui/UpdateFlow.h"
#include "app/ui/settings/SettingsWindow.h"
#include "platform/files/FileExists.h"
#include "platform/files/SystemFileAttributes.h"

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QStackedLayout>
#include <QStandardPaths>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>

namespace quillet {
namespace {

constexpr double shadeOpacity = 0.45;
constexpr int alertSymbolSize = 32;
constexpr std::string_view panelFolderKey = "QLT.openPanelDirectory";

FilePanel::Filter audioFilter(const QString& name)
{
    FilePanel::Filter filter{ name, {} };
    for (const std::string_view type : supportedAudioTypes) {
        const QString pattern = QStringLiteral("*.") + QLatin1String(type.data(), static_cast<qsizetype>(type.size()));
        filter.patterns << pattern << pattern.toUpper();
    }
    return filter;
}

class Shade final : public QWidget {
public:
    explicit Shade(QWidget* parent)
        : QWidget(parent)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        hide();
    }

protected:
    void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(rect(), withOpacity(AppTheme::navy, shadeOpacity)); }
};

/// Where songs are looked for at first.
FilePath musicFolder()
{
    const QString music = QStandardPaths::writableLocation(QStandardPaths::MusicLocation);
    return pathOf(QFileInfo::exists(music) ? music : QStandardPaths::writableLocation(QStandardPaths::HomeLocation));
}

}  // namespace

ContentView::ContentView(const Services& services, QWidget* parent)
    : QWidget(parent),
      m_services(services),
      m_toolBar(new ToolBar(services.state, services.commands, services.theme)),
      m_screens(new QStackedLayout),
      m_notices(new QVBoxLayout),
      m_silenceNotice(
          new Notice(services.theme, tr("There is no sound device: playback goes on without sound until there is one."))),
      m_settingsNotice(new SettingsNotice(services.theme)),
      m_searchNotice(new SearchNotice(services.theme, [this] { m_opener.cancel(); })),
      m_overlay(new DropOverlay(services.theme, this)),
      m_shade(new Shade(this)),
      m_keys(new KeyResponderView(services.state, services.commands, this)),
      m_opener({ services.songs, services.commands, services.background, services.scheduler },
               { [this](const FilePath& song) { loadFile(song, RestoreSettings::no); },
                 [this](const FilePath& path, bool isFolder) { isFolder ? sayThatFolderIsEmpty(path) : refuse(path); },
                 [this](bool isSearching) { m_searchNotice->setVisible(isSearching); } }),
      m_stems(new StemSeparationFlow({ services.state,
                                       services.loader,
                                       services.commands,
                                       services.separator,
                                       services.stemSessions,
                                       services.stemMixes,
                                       { services.audioFiles, services.encoders },
                                       services.background,
                                       services.scheduler,
                                       services.theme },
                                     flowHost())),
      m_export(new ExportFlow({ services.state,
                                { { services.audioFiles, services.encoders }, services.background, services.scheduler },
                                services.theme },
                              flowHost())),
      m_loopFiles(new LoopFileFlow({ services.state, services.background, services.scheduler, services.theme }, flowHost())),
      m_updates(new UpdateFlow(
          { services.updater, services.defaults, services.theme, currentDate },
          [this](Notice& notice) { m_notices->addWidget(&notice); }, this))
{
    m_stems->setParent(this);
    m_export->setParent(this);
    m_loopFiles->setParent(this);
    connect(m_stems, &StemSeparationFlow::isInFrontChanged, this, &ContentView::syncShade);
    setAcceptDrops(true);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_toolBar);
    column->addLayout(m_notices);
    addLastingNotices();
    column->addWidget(new SongStrip(services.state, services.songs, services.commands, services.theme));
    m_keys->setGeometry(0, 0, 0, 0);
    column->addLayout(m_screens, 1);
    m_screens->addWidget(new EmptyScreen(services.state, services.songs, services.commands, services.theme));
    m_screens->addWidget(new LoadingScreen(services.state, services.theme));
    connect(&services.state, &AppState::loadingStateChanged, this, &ContentView::showScreen);
    connect(&services.state, &AppState::isShowingHelpChanged, this, &ContentView::syncHelp);
    m_services.loader.onError([this](const std::string& message) { showError(QString::fromStdString(message)); });
    // Whoever clicks on the window under a sheet means the sheet: the keys go there.
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this](const QWindow* focused) {
        if (focused != nullptr && focused == window()->windowHandle() && frontSheet() != nullptr)
            QMetaObject::invokeMethod(this, &ContentView::activateSheet, Qt::QueuedConnection);
    });
    showScreen();
    subscribe();
    m_services.loader.refreshRecentFiles();
}

FlowHost ContentView::flowHost()
{
    return { *this, [this](QDialog& sheet) { openSheet(sheet); }, [this](Notice& notice) { m_notices->addWidget(&notice); } };
}

ContentView::~ContentView()
{
    m_services.loader.onError(nullptr);
    // The sheets end with the view, and have nobody to tell.
    for (QDialog* sheet : m_sheets)
        sheet->disconnect(this);
}

void ContentView::addLastingNotices()
{
    m_notices->setSpacing(0);
    m_notices->addWidget(m_settingsNotice);
    m_notices->addWidget(m_silenceNotice);
    m_silenceNotice->hide();
    m_notices->addWidget(m_searchNotice);
    m_searchNotice->hide();
    m_notices->addWidget(new LevelNotice(m_services.state, m_services.theme));
    m_notices->addWidget(new OfferNotice(m_services.state, m_services.theme));
    m_notices->addWidget(new HintNotice(m_services.hints, m_services.keys, m_services.theme));
    m_lastingNotices = m_notices->count();
}

void ContentView::subscribe()
{
    const auto on = [this](CommandId id, auto&& action) {
        m_subscriptions.push_back(m_services.commands.onCommand(id, action));
    };
    on(CommandId::openFile, [this](const auto&) { openFile(); });
    on(CommandId::openFromURL, [this](const auto&) { openFromURL(); });
    on(CommandId::openRecent, [this](const std::optional<FilePath>& url) {
        if (url)
            loadFile(*url, RestoreSettings::yes);
    });
    on(CommandId::clearRecents, [this](const auto&) {
        m_services.recentFiles.clear();
        m_services.loader.refreshRecentFiles();
    });
    on(CommandId::separateStems, [this](const auto&) { m_stems->showSheet(); });
    on(CommandId::cleanupStems, [this](const auto&) {
        if (m_services.state.stemSession())
            m_stems->confirmCleanup();
    });
    on(CommandId::exportStems, [this](const auto&) { m_stems->askWhatToExport(); });
    on(CommandId::exportHeard, [this](const auto&) { m_export->ask(); });
    on(CommandId::saveLoopFile, [this](const auto&) { m_loopFiles->askWhereToSave(); });
    on(CommandId::loadLoopFile, [this](const auto&) { m_loopFiles->askWhatToLoad(); });
    on(CommandId::toggleFollow, [this](const auto&) { m_services.follow.toggle(); });
    on(CommandId::showSettings, [this](const auto&) { showSettings(); });
    on(CommandId::checkForUpdates,
       [this](const auto&) { m_updates->checkForUpdates(*this, [this](QDialog& sheet) { openSheet(sheet); }); });
    on(CommandId::stemFilesDeleted, [this](const std::optional<FilePath>& song) {
        if (!song || song == m_services.state.audioFileURL())
            m_services.state.exitStemMode();
    });
    on(CommandId::showHelp, [this](const auto&) { m_services.state.setIsShowingHelp(true); });
}

void ContentView::showScreen()
{
    switch (m_services.state.loadingState().stage) {
    case LoadingState::Stage::idle:
        m_screens->setCurrentIndex(0);
        break;
    case LoadingState::Stage::loading:
        m_screens->setCurrentIndex(1);
        break;
    case LoadingState::Stage::loaded:
        // Made when it is first needed, so that the window is there sooner.
        if (m_player == nullptr) {
            m_player = new PlayerScreen(
                m_services.state, m_services.theme,
                { { m_services.amplitudes, m_services.background, m_services.scheduler, m_services.programEnds },
                  m_services.follow });
            m_screens->addWidget(m_player);
        }
        m_screens->setCurrentWidget(m_player);
        break;
    }
}

// ---- Opening ----

void ContentView::loadFile(const FilePath& url, RestoreSettings restoreSettings)
{
    m_opener.cancel();
    // Before the song that is open is closed for it.
    if (isNoAudio(url)) {
        refuse(url);
        return;
    }
    // What is being typed still belongs to the song before.
    m_keys->takeFocus();
    m_services.loader.loadFile(url, restoreSettings);
}

void ContentView::refuse(const FilePath& path)
{
    showError(tr("“%1” is not an audio file.").arg(fileName(path.has_filename() ? path : path.parent_path())));
}

void ContentView::sayThatFolderIsEmpty(const FilePath& folder)
{
    showError(tr("There are no songs in “%1”.").arg(fileName(folder.has_filename() ? folder : folder.parent_path())));
}

bool ContentView::takeSpace(const QKeyEvent& event) { return m_keys->takeSpace(event); }

void ContentView::openFile()
{
    if (m_openPanel) {
        m_openPanel->raise();
        return;
    }
    const FilePath last = m_services.defaults.string(panelFolderKey).value_or("");
    const auto take = [this](const std::vector<FilePath>& files) {
        m_services.defaults.setString(panelFolderKey, files.front().parent_path().native());
        open(files);
    };
    m_openPanel = new FilePanel(*this,
                                { tr("Open File..."),
                                  fileExists(last) ? last : musicFolder(),
                                  false,
                                  {},
                                  { audioFilter(tr("Audio files")), { tr("All files"), { QStringLiteral("*") } } },
                                  true },
                                take, [this](QDialog& panel) { openSheet(panel); });
}

void ContentView::openFromURL()
{
    if (m_openFromURL) {
        m_openFromURL->raise();
        m_openFromURL->activateWindow();
        return;
    }
    m_openFromURL =
        new OpenFromURLSheet({ m_services.downloader, m_services.ytDlpUpdater, m_services.downloadSettings, m_services.theme },
                             { [this](const FilePath& file) {
                                  closeOpenFromURL();
                                  loadFile(file, RestoreSettings::no);
                              },
                               [this] { closeOpenFromURL(); } },
                             this);
    connect(m_openFromURL, &OpenFromURLSheet::isInFrontChanged, this, &ContentView::syncShade);
    openSheet(*m_openFromURL);
}

void ContentView::closeOpenFromURL()
{
    if (auto download = m_openFromURL->releaseDownload()) {
        auto open = [this](const FilePath& file) { loadFile(file, RestoreSettings::no); };
        m_notices->addWidget(new DownloadNotice(m_services.theme, std::move(download), std::move(open)));
    }
    m_openFromURL->hide();
    m_openFromURL->deleteLater();
    m_openFromURL = nullptr;
}

void ContentView::showSettings()
{
    if (m_settings == nullptr) {
        const auto check = [this] { m_updates->checkForUpdates(*m_settings, [](QDialog& sheet) { sheet.open(); }); };
        m_settings = new SettingsWindow(
            { { m_services.theme, m_services.defaults, m_services.stemSettings, m_services.separator, m_services.stemSessions,
                m_services.stemMixes, m_services.commands, m_services.background, m_services.scheduler },
              { m_services.theme, m_services.waveformCache, m_services.settings, m_services.background, m_services.scheduler },
              { m_services.theme, m_services.downloadSettings, m_services.ytDlpUpdater, m_services.background,
                m_services.scheduler },
              check,
              [this] { return changeLanguage(); },
              m_services.keys },
            this);
    }
    m_settings->present();
}

void ContentView::showLanguageSettings(const QRect& place)
{
    showSettings();
    m_settings->setGeometry(place);
    m_settings->presentLanguage();
}

QRect ContentView::settingsPlace() const { return m_settings->geometry(); }

/// False while something is under way that the view shows or asks about.
bool ContentView::changeLanguage()
{
    const bool isAtWork = !m_sheets.empty() || m_notices->count() > m_lastingNotices || m_services.separator.isRunning()
        || m_services.ytDlpUpdater.isRunning();
    if (!isAtWork)
        Q_EMIT languageChosen();
    return !isAtWork;
}

void ContentView::checkForUpdatesInBackground() { m_updates->checkForUpdatesInBackground(); }

void ContentView::showError(const QString& message)
{
    auto* alert = makeStatement(*this, tr("Error"), message.isEmpty() ? tr("Unknown error") : message);
    alert->setIconPixmap(
        symbolPixmap(QStringLiteral("xmark.circle"), alertSymbolSize, m_services.theme.theme().redText, devicePixelRatioF()));
    openSheet(*alert);
}

void ContentView::setHeard(bool isHeard) { m_silenceNotice->setVisible(!isHeard); }

void ContentView::setSettingsHealth(const DefaultsHealth& health) { m_settingsNotice->setHealth(health); }

void ContentView::openSheet(QDialog& sheet)
{
    m_sheets.push_back(&sheet);
    const auto close = [this] {
        syncShade();
        m_keys->takeFocus();
    };
    connect(&sheet, &QDialog::finished, this, close);
    // Some end without a word.
    connect(&sheet, &QObject::destroyed, this, [this, close](const QObject* gone) {
        std::erase_if(m_sheets, [gone](const QDialog* open) { return open == gone; });
        close();
    });
    sheet.open();
    syncShade();
}

/// The one that stands before the window, the last that was opened; null if none does.
QDialog* ContentView::frontSheet() const
{
    const auto isInFront = [](const QDialog* sheet) { return sheet->isVisible() && sheet->windowModality() != Qt::NonModal; };
    const auto front = std::find_if(m_sheets.rbegin(), m_sheets.rend(), isInFront);
    return front == m_sheets.rend() ? nullptr : *front;
}

void ContentView::activateSheet()
{
    if (QDialog* sheet = frontSheet()) {
        sheet->raise();
        sheet->activateWindow();
    }
}

/// The window is dimmed while any sheet stands before it.
void ContentView::syncShade()
{
    m_shade->setGeometry(rect());
    m_shade->setVisible(frontSheet() != nullptr);
    m_shade->raise();
}

void ContentView::syncHelp()
{
    if (!m_services.state.isShowingHelp()) {
        if (m_help)
            m_help->accept();
        return;
    }
    if (m_help)
        return;
    m_help = new HelpSheet(m_services.theme, this);
    m_help->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_help, &QDialog::finished, this, [this] {
        m_help = nullptr;
        m_services.state.setIsShowingHelp(false);
    });
    openSheet(*m_help);
}

/// What nothing in the view has handled.
void ContentView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && m_services.hints.areShown())
        m_services.hints.dismiss();
    else
        QWidget::keyPressEvent(event);
}

// ---- Drops ----

void ContentView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_overlay->setGeometry(rect());
    m_shade->setGeometry(rect());
}

void ContentView::dragEnterEvent(QDragEnterEvent* event)
{
    m_overlay->setDrag(mayHoldSongs(droppedFiles(*event->mimeData())) ? DropOverlay::Drag::audio
                                                                      : DropOverlay::Drag::unsupported);
    // Also where nothing may be dropped: the view has to hear of the drag's end.
    event->acceptProposedAction();
}

void ContentView::dragMoveEvent(QDragMoveEvent* event) { event->setAccepted(m_overlay->drag() == DropOverlay::Drag::audio); }

void ContentView::dragLeaveEvent(QDragLeaveEvent*) { m_overlay->setDrag(DropOverlay::Drag::none); }

void ContentView::dropEvent(QDropEvent* event)
{
    m_overlay->setDrag(DropOverlay::Drag::none);
    const auto files = droppedFiles(*event->mimeData());
    if (!mayHoldSongs(files)) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    open(files);
}

}  // namespace quillet
