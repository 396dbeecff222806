// Where the user's own files lie. It looks the places up afresh at every call, from the environment first, and creates
// nothing unless asked to.
// Threads: callable from every thread, as long as none changes the environment.
#pragma once

#include "platform/base/FilePath.h"

namespace quillet {

/// The user's home directory: $HOME, or what the user database names where that is not set to an absolute path. Empty where
/// neither knows one.
[[nodiscard]] FilePath homeDirectory();

/// The program's directory of settings: "quillet" in $XDG_CONFIG_HOME, or in ".config" of the home directory where that is
/// not set to an absolute path. It need not exist.
[[nodiscard]] FilePath configDirectory();

/// The program's directory of data: "quillet" in $XDG_DATA_HOME, or in ".local/share" of the home directory, likewise.
[[nodiscard]] FilePath dataDirectory();

/// The program's directory of what can be made again: "quillet" in $XDG_CACHE_HOME, or in ".cache" of the home directory. It
/// need not exist.
[[nodiscard]] FilePath cacheDirectory();

/// Creates the directory and those above it that are missing, for the user alone (mode 0700). What exists keeps its mode.
/// False if there is no such directory afterwards.
[[nodiscard]] bool createPrivateDirectory(const FilePath& directory);

}  // namespace quillet
