#include "app/ui/MainWindow.h"

#include "app/ui/FileNames.h"
#include "app/ui/ToolBar.h"
#include "app/ui/settings/KeySettings.h"
#include "platform/base/Require.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenuBar>
#include <QScreen>

#include <map>

namespace quillet {
namespace {

constexpr QSize minContentSize(680, 580);
constexpr QSize usualSize(1000, 900);
constexpr const char* placeKey = "QLT.windowGeometry";

/// Title and artist by the open song's tags, or the file's name; empty where none is open.
QString songName(const AppState& state)
{
    const QString title = QString::fromStdString(state.songTags().title);
    const QString artist = QString::fromStdString(state.songTags().artist);
    if (title.isEmpty())
        return state.audioFileURL() ? fileName(*state.audioFileURL()) : QString();
    return artist.isEmpty() ? title : MainWindow::tr("%1 – %2").arg(title, artist);
}

QString kindText(EditKind kind)
{
    switch (kind) {
    case EditKind::region:
        return MainWindow::tr("Region");
    case EditKind::speed:
        return MainWindow::tr("Speed");
    case EditKind::pitch:
        return MainWindow::tr("Pitch");
    case EditKind::equalizer:
        return MainWindow::tr("Equalizer");
    case EditKind::channels:
        return MainWindow::tr("Channels");
    case EditKind::trainer:
        return MainWindow::tr("Trainer");
    case EditKind::loops:
        return MainWindow::tr("Loops");
    case EditKind::stems:
        return MainWindow::tr("Stem Mix");
    }
    return {};
}

}  // namespace

MainWindow::MainWindow(const ContentView::Services& services, Translations& translations)
    : m_services(services),
      m_translations(translations)
{
    syncTitle();
    for (const auto changed : { &AppState::audioFileURLChanged, &AppState::songTagsChanged })
        connect(&services.state, changed, this, &MainWindow::syncTitle);
    setMinimumSize(minContentSize);
    restorePlace();
}

void MainWindow::populate()
{
    REQUIRE(m_content == nullptr);
    m_content = new ContentView(m_services);
    m_content->setMinimumSize(minContentSize);
    // Not while it is still being asked.
    connect(m_content, &ContentView::languageChosen, this, &MainWindow::changeLanguage, Qt::QueuedConnection);
    buildMenus();
    setCentralWidget(m_content);
    // At once, not in the loop's next turn.
    m_content->show();
    // The menus come on top of it.
    setMinimumSize(minContentSize + QSize(0, menuBar()->isNativeMenuBar() ? 0 : menuBar()->sizeHint().height()));
}

/// Every text is asked for once, when its view is made: so the views are made again.
void MainWindow::changeLanguage()
{
    m_translations.install(Translations::chosen(m_services.defaults));
    const QRect settingsPlace = m_content->settingsPlace();
    delete takeCentralWidget();
    m_content = nullptr;
    setMenuBar(new QMenuBar);
    populate();
    syncTitle();
    setHeard(m_isHeard);
    setSettingsHealth(m_settingsHealth);
    m_content->showLanguageSettings(settingsPlace);
}

void MainWindow::setHeard(bool isHeard)
{
    m_isHeard = isHeard;
    m_content->setHeard(isHeard);
}

void MainWindow::setSettingsHealth(const DefaultsHealth& health)
{
    m_settingsHealth = health;
    m_content->setSettingsHealth(health);
}

void MainWindow::buildMenus()
{
    std::map<std::string_view, QMenu*> menus;
    // Shortcuts hold in every window of the program that no dialog stands before.
    for (const Command& command : commands) {
        if (command.menu == nullptr)
            continue;
        QMenu*& menu = menus[command.menu];
        if (menu == nullptr)
            menu = menuBar()->addMenu(translated(command.menu));
        QAction* action = menu->addAction(translated(command.title));
        action->setShortcutContext(Qt::ApplicationShortcut);
        action->setAutoRepeat(!command.actsOnce);
        followKeys(*action, command);
        connect(action, &QAction::triggered, this, [this, id = command.id] { m_services.commands.execute(id); });
        if (command.id == CommandId::separateStems || command.id == CommandId::cleanupStems
            || command.id == CommandId::exportStems)
            followStems(*action, command.id != CommandId::separateStems);
        if (command.id == CommandId::undo || command.id == CommandId::redo)
            followHistory(*action, command.id);
        if (command.id == CommandId::saveLoop || command.id == CommandId::playLoopList || command.id == CommandId::saveLoopFile
            || command.id == CommandId::loadLoopFile)
            followLoops(*action, command.id == CommandId::playLoopList || command.id == CommandId::saveLoopFile);
        if (command.id == CommandId::toggleTrainer)
            followTrainer(*action);
        if (command.id == CommandId::toggleFollow)
            followChoice(*action);
        if (command.id == CommandId::previousSong || command.id == CommandId::nextSong)
            followSongs(*action, command.id);
        if (command.id == CommandId::exportStems)
            addRecentFiles(*menu);
        if (command.id == CommandId::showSettings) {
            action->setMenuRole(QAction::PreferencesRole);
            addQuit(*menu);
        }
    }
}

void MainWindow::followStems(QAction& action, bool isForStems)
{
    const AppState& state = m_services.state;
    const auto sync = [&action, &state, isForStems] {
        action.setVisible(state.stemSession().has_value() == isForStems);
        action.setEnabled(state.isLoaded());
    };
    connect(&state, &AppState::stemSessionChanged, &action, sync);
    connect(&state, &AppState::loadingStateChanged, &action, sync);
    sync();
}

/// Its shortcut, or the key that is no shortcut of the menu's own beside its title.
void MainWindow::followKeys(QAction& action, const Command& command)
{
    const auto sync = [&action, &command, &keys = m_services.keys] {
        const auto chosen = keys.chosen(command.id);
        action.setShortcut(chosen ? QKeySequence() : QKeySequence(command.shortcut));
        const QString title = action.text().section(QLatin1Char('\t'), 0, 0);
        const bool namesItsKey = title.contains(QLatin1Char('[')) && !chosen;
        const auto chord = chosen || command.shortcut == 0 ? keys.present(command) : std::nullopt;
        action.setText(chord && !namesItsKey ? title + QLatin1Char('\t') + chordText(*chord) : title);
    };
    connect(&m_services.keys, &KeyMap::changed, &action, sync);
    sync();
}

void MainWindow::followHistory(QAction& action, CommandId id)
{
    const AppState& state = m_services.state;
    const auto sync = [&action, &state, id] {
        const auto kind = id == CommandId::undo ? state.undoable() : state.redoable();
        const QString title = translated(commandOf(id).title);
        const QString key = action.text().section(QLatin1Char('\t'), 1);
        action.setText((kind ? tr("%1 %2", "Undo, or Redo, and what").arg(title, kindText(*kind)) : title)
                       + (key.isEmpty() ? QString() : QLatin1Char('\t') + key));
        action.setEnabled(kind.has_value());
    };
    connect(&state, &AppState::historyChanged, &action, sync);
    sync();
}

/// Enabled while a song is open, and has loops if `needsLoops`.
void MainWindow::followLoops(QAction& action, bool needsLoops)
{
    const AppState& state = m_services.state;
    const auto sync = [&action, &state, needsLoops] {
        action.setEnabled(state.isLoaded() && (!needsLoops || !state.loops().empty()));
    };
    connect(&state, &AppState::loopsChanged, &action, sync);
    connect(&state, &AppState::loadingStateChanged, &action, sync);
    sync();
}

/// One that is paused goes on.
void MainWindow::followTrainer(QAction& action)
{
    action.setCheckable(true);
    const AppState& state = m_services.state;
    const auto sync = [&action, &state] {
        action.setEnabled(state.isLoaded());
        action.setChecked(state.trainerState() == TrainerState::on);
    };
    connect(&state, &AppState::trainerStateChanged, &action, sync);
    connect(&state, &AppState::loadingStateChanged, &action, sync);
    // What was clicked may have had no effect.
    connect(&action, &QAction::triggered, &action, sync);
    sync();
}

void MainWindow::followChoice(QAction& action)
{
    action.setCheckable(true);
    const auto sync = [&action, &follow = m_services.follow] { action.setChecked(follow.isOn()); };
    connect(&m_services.follow, &FollowChoice::changed, &action, sync);
    sync();
}

/// In view while there is a list.
void MainWindow::followSongs(QAction& action, CommandId id)
{
    const SongList& songs = m_services.songs;
    const auto sync = [&action, &songs, id] {
        action.setVisible(!songs.songs().empty());
        action.setEnabled((id == CommandId::nextSong ? songs.next() : songs.previous()) != nullptr);
    };
    for (const auto changed : { &SongList::songsChanged, &SongList::placeChanged })
        connect(&songs, changed, &action, sync);
    sync();
}

void MainWindow::addRecentFiles(QMenu& menu)
{
    QMenu* recent = menu.addMenu(tr("Open Recent"));
    connect(recent, &QMenu::aboutToShow, this,
            [this, recent] { fillRecentMenu(*recent, m_services.state, m_services.commands); });
    menu.addSeparator();
}

void MainWindow::addQuit(QMenu& menu)
{
    menu.addSeparator();
    QAction* quit = menu.addAction(tr("Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q), this, &QWidget::close);
    quit->setMenuRole(QAction::QuitRole);
    quit->setShortcutContext(Qt::ApplicationShortcut);
}

/// What nothing in the window has handled.
void MainWindow::keyPressEvent(QKeyEvent* event)
{
    if (m_content == nullptr || !m_content->takeSpace(*event))
        QMainWindow::keyPressEvent(event);
}

void MainWindow::syncTitle()
{
    QString song = songName(m_services.state);
    // The toolkit has a meaning of its own for it.
    song.replace(QLatin1String("[*]"), QLatin1String("[*][*]"));
    setWindowTitle(song.isEmpty() ? QStringLiteral("Quillet") : tr("%1 — Quillet").arg(song));
}

void MainWindow::restorePlace()
{
    if (const auto place = m_services.defaults.data(placeKey))
        if (restoreGeometry(QByteArray::fromStdString(*place)))
            return;
    const QSize available = QGuiApplication::primaryScreen()->availableSize();
    resize(usualSize.boundedTo(available - QSize(40, 60)));
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    m_services.defaults.setData(placeKey, saveGeometry().toStdString());
    QMainWindow::closeEvent(event);
}

}  // namespace quillet
