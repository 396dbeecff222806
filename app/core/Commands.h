// The commands of the program: what each posts, what it is called, its shortcut, its key's place on the keyboard, and its menu.
// Menus, toolbar, key filter and window read this table; none has a copy of a name or a key.
// Threads: constants; functions on the main thread.
#pragma once

#include <QString>
#include <QtCore/qnamespace.h>

#include <array>
#include <string_view>

namespace quillet {

enum class CommandId {
    openFile,
    openFromURL,
    /// With the file as its object.
    openRecent,
    clearRecents,
    separateStems,
    cleanupStems,
    exportStems,
    playPause,
    stopReset,
    toggleLoop,
    toggleHold,
    holdForward,
    holdBackward,
    decreaseSpeed,
    increaseSpeed,
    pitchUp,
    pitchDown,
    muteVocals,
    muteDrums,
    muteBass,
    muteGuitar,
    mutePiano,
    muteOther,
    soloVocals,
    soloDrums,
    soloBass,
    soloGuitar,
    soloPiano,
    soloOther,
    showSettings,
    showHelp,
    checkForUpdates,
    // What has happened, with the song as their object; without one: to all songs.
    stemFilesCreated,
    stemFilesDeleted,
};

/// A key by its place on the keyboard, so that it stays where it is on every layout; by its name where an event carries no
/// place, or every layout has the same name for it.
struct PhysicalKey {
    /// As X11 and Wayland number the places; 0: no key.
    quint32 scanCode = 0;
    Qt::Key key = Qt::Key_unknown;
};

/// When a command's physical key acts.
enum class KeyUse {
    never,
    /// With the platform's command key (Ctrl), whatever else is held, and wherever the focus is.
    withCommandKey,
    /// Without Ctrl, Alt and Meta, unless a text is being edited.
    plain,
    /// The same, with Shift or without it.
    plainWithShift,
    plainWithoutShift,
    /// The latter, and only while an instant is held.
    plainWhileHeld,
    /// Where the player has the focus.
    inPlayer,
};

struct Command {
    CommandId id;
    /// Of the notification that it posts.
    std::string_view name;
    /// English, for translation; null for what is in no menu of its own.
    const char* title = nullptr;
    const char* menu = nullptr;
    /// Qt's modifiers and key; 0 for none. Ctrl is the platform's command key.
    int shortcut = 0;
    PhysicalKey key = {};
    KeyUse use = KeyUse::never;
};

constexpr int withCommandKey(Qt::Key key) { return static_cast<int>(Qt::ControlModifier) | static_cast<int>(key); }

/// In the order of the menus. The hold commands name their keys, which are plain keys and no shortcuts.
inline constexpr std::array commands{
    Command{ CommandId::openFile, "QLT.openFile", QT_TRANSLATE_NOOP("Commands", "Open File..."),
             QT_TRANSLATE_NOOP("Commands", "File"), withCommandKey(Qt::Key_O) },
    Command{ CommandId::openFromURL, "QLT.openFromURL", QT_TRANSLATE_NOOP("Commands", "Open from URL..."), "File",
             withCommandKey(Qt::Key_O) | static_cast<int>(Qt::ShiftModifier) },
    // Of these the menu shows those that make sense.
    Command{ CommandId::separateStems, "QLT.separateStems", QT_TRANSLATE_NOOP("Commands", "Separate Stems…"), "File" },
    Command{ CommandId::cleanupStems, "QLT.cleanupStems", QT_TRANSLATE_NOOP("Commands", "Cleanup Stems"), "File" },
    Command{ CommandId::exportStems, "QLT.exportStems", QT_TRANSLATE_NOOP("Commands", "Export Stems…"), "File" },
    Command{ CommandId::showSettings, "QLT.showSettings", QT_TRANSLATE_NOOP("Commands", "Settings…"), "File",
             withCommandKey(Qt::Key_Comma) },
    Command{ CommandId::openRecent, "QLT.openRecent" },
    Command{ CommandId::clearRecents, "QLT.clearRecents" },
    Command{ CommandId::playPause, "QLT.playPause", nullptr, nullptr, 0, { 65, Qt::Key_Space }, KeyUse::inPlayer },
    Command{ CommandId::stopReset,
             "QLT.stopReset",
             QT_TRANSLATE_NOOP("Commands", "Stop and Reset"),
             QT_TRANSLATE_NOOP("Commands", "Playback"),
             withCommandKey(Qt::Key_R),
             { 27, Qt::Key_R },
             KeyUse::withCommandKey },
    Command{ CommandId::toggleLoop,
             "QLT.toggleLoop",
             QT_TRANSLATE_NOOP("Commands", "Toggle Loop"),
             "Playback",
             withCommandKey(Qt::Key_L),
             { 46, Qt::Key_L },
             KeyUse::withCommandKey },
    Command{ CommandId::toggleHold,
             "QLT.toggleHold",
             QT_TRANSLATE_NOOP("Commands", "Toggle Hold [H]"),
             "Playback",
             0,
             { 43, Qt::Key_H },
             KeyUse::plain },
    Command{ CommandId::holdForward,
             "QLT.holdForward",
             QT_TRANSLATE_NOOP("Commands", "Hold Step Forward [→]"),
             "Playback",
             0,
             { 114, Qt::Key_Right },
             KeyUse::plainWhileHeld },
    Command{ CommandId::holdBackward,
             "QLT.holdBackward",
             QT_TRANSLATE_NOOP("Commands", "Hold Step Backward [←]"),
             "Playback",
             0,
             { 113, Qt::Key_Left },
             KeyUse::plainWhileHeld },
    Command{ CommandId::decreaseSpeed,
             "QLT.decreaseSpeed",
             QT_TRANSLATE_NOOP("Commands", "Decrease Speed"),
             QT_TRANSLATE_NOOP("Commands", "Speed"),
             withCommandKey(Qt::Key_Left),
             { 113, Qt::Key_Left },
             KeyUse::withCommandKey },
    Command{ CommandId::increaseSpeed,
             "QLT.increaseSpeed",
             QT_TRANSLATE_NOOP("Commands", "Increase Speed"),
             "Speed",
             withCommandKey(Qt::Key_Right),
             { 114, Qt::Key_Right },
             KeyUse::withCommandKey },
    Command{ CommandId::pitchUp,
             "QLT.pitchUp",
             QT_TRANSLATE_NOOP("Commands", "Pitch Up 1 Cent"),
             QT_TRANSLATE_NOOP("Commands", "Pitch"),
             withCommandKey(Qt::Key_Up),
             { 111, Qt::Key_Up },
             KeyUse::withCommandKey },
    Command{ CommandId::pitchDown,
             "QLT.pitchDown",
             QT_TRANSLATE_NOOP("Commands", "Pitch Down 1 Cent"),
             "Pitch",
             withCommandKey(Qt::Key_Down),
             { 116, Qt::Key_Down },
             KeyUse::withCommandKey },
    Command{ CommandId::muteVocals, "QLT.muteVocals", nullptr, nullptr, 0, { 10, Qt::Key_1 }, KeyUse::plainWithoutShift },
    Command{ CommandId::muteDrums, "QLT.muteDrums", nullptr, nullptr, 0, { 11, Qt::Key_2 }, KeyUse::plainWithoutShift },
    Command{ CommandId::muteBass, "QLT.muteBass", nullptr, nullptr, 0, { 12, Qt::Key_3 }, KeyUse::plainWithoutShift },
    Command{ CommandId::muteGuitar, "QLT.muteGuitar", nullptr, nullptr, 0, { 13, Qt::Key_4 }, KeyUse::plainWithoutShift },
    Command{ CommandId::mutePiano, "QLT.mutePiano", nullptr, nullptr, 0, { 14, Qt::Key_5 }, KeyUse::plainWithoutShift },
    Command{ CommandId::muteOther, "QLT.muteOther", nullptr, nullptr, 0, { 15, Qt::Key_6 }, KeyUse::plainWithoutShift },
    Command{ CommandId::soloVocals, "QLT.soloVocals", nullptr, nullptr, 0, { 10, Qt::Key_1 }, KeyUse::plainWithShift },
    Command{ CommandId::soloDrums, "QLT.soloDrums", nullptr, nullptr, 0, { 11, Qt::Key_2 }, KeyUse::plainWithShift },
    Command{ CommandId::soloBass, "QLT.soloBass", nullptr, nullptr, 0, { 12, Qt::Key_3 }, KeyUse::plainWithShift },
    Command{ CommandId::soloGuitar, "QLT.soloGuitar", nullptr, nullptr, 0, { 13, Qt::Key_4 }, KeyUse::plainWithShift },
    Command{ CommandId::soloPiano, "QLT.soloPiano", nullptr, nullptr, 0, { 14, Qt::Key_5 }, KeyUse::plainWithShift },
    Command{ CommandId::soloOther, "QLT.soloOther", nullptr, nullptr, 0, { 15, Qt::Key_6 }, KeyUse::plainWithShift },
    Command{ CommandId::showHelp, "QLT.showHelp", QT_TRANSLATE_NOOP("Commands", "Quillet Help"),
             QT_TRANSLATE_NOOP("Commands", "Help") },
    Command{ CommandId::checkForUpdates, "QLT.checkForUpdates", QT_TRANSLATE_NOOP("Commands", "Check for Updates..."), "Help" },
    Command{ CommandId::stemFilesCreated, "QLT.stemFilesCreated" },
    Command{ CommandId::stemFilesDeleted, "QLT.stemFilesDeleted" },
};

/// The command's row of the table.
[[nodiscard]] const Command& commandOf(CommandId id);

/// `text` is a title or a menu of the table.
[[nodiscard]] QString translated(const char* text);

}  // namespace quillet
