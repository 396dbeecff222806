// The commands of the menus: what each posts, what it is called, its shortcut and its menu; and the names of the notifications.
// Menus, toolbar and window read this table; none has a copy of a name.
// Threads: constants.
#pragma once

#include <QtCore/qnamespace.h>

#include <array>
#include <string_view>

namespace quillet {

inline constexpr std::string_view openFileName = "QLT.openFile";
inline constexpr std::string_view openFromURLName = "QLT.openFromURL";
/// With the file as its object.
inline constexpr std::string_view openRecentName = "QLT.openRecent";
inline constexpr std::string_view clearRecentsName = "QLT.clearRecents";
inline constexpr std::string_view stopResetName = "QLT.stopReset";
inline constexpr std::string_view toggleLoopName = "QLT.toggleLoop";
inline constexpr std::string_view toggleHoldName = "QLT.toggleHold";
inline constexpr std::string_view holdForwardName = "QLT.holdForward";
inline constexpr std::string_view holdBackwardName = "QLT.holdBackward";
inline constexpr std::string_view decreaseSpeedName = "QLT.decreaseSpeed";
inline constexpr std::string_view increaseSpeedName = "QLT.increaseSpeed";
inline constexpr std::string_view pitchUpName = "QLT.pitchUp";
inline constexpr std::string_view pitchDownName = "QLT.pitchDown";
inline constexpr std::string_view showHelpName = "QLT.showHelp";

struct Command {
    std::string_view name;
    /// UTF-8, as the menu shows it.
    const char* title;
    /// Qt's modifiers and key; 0 for none. Ctrl is the platform's command key.
    int shortcut;
    const char* menu;
};

constexpr int withCommandKey(Qt::Key key) { return static_cast<int>(Qt::ControlModifier) | static_cast<int>(key); }

/// In the order of the menus. The hold commands name their keys, which are plain keys and no shortcuts.
inline constexpr std::array menuCommands{
    Command{ openFileName, "Open File...", withCommandKey(Qt::Key_O), "File" },
    Command{ openFromURLName, "Open from URL...", withCommandKey(Qt::Key_O) | static_cast<int>(Qt::ShiftModifier), "File" },
    Command{ stopResetName, "Stop and Reset", withCommandKey(Qt::Key_R), "Playback" },
    Command{ toggleLoopName, "Toggle Loop", withCommandKey(Qt::Key_L), "Playback" },
    Command{ toggleHoldName, "Toggle Hold [H]", 0, "Playback" },
    Command{ holdForwardName, "Hold Step Forward [→]", 0, "Playback" },
    Command{ holdBackwardName, "Hold Step Backward [←]", 0, "Playback" },
    Command{ decreaseSpeedName, "Decrease Speed", withCommandKey(Qt::Key_Left), "Speed" },
    Command{ increaseSpeedName, "Increase Speed", withCommandKey(Qt::Key_Right), "Speed" },
    Command{ pitchUpName, "Pitch Up 1 Cent", withCommandKey(Qt::Key_Up), "Pitch" },
    Command{ pitchDownName, "Pitch Down 1 Cent", withCommandKey(Qt::Key_Down), "Pitch" },
    Command{ showHelpName, "Quillet Help", 0, "Help" },
};

}  // namespace quillet
