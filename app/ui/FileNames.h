// File names as the screen shows them. Bytes that are no text are shown as U+FFFD; the name that is used stays the path itself.
// Threads: callable from every thread, as long as none changes the environment.
#pragma once

#include "platform/base/FilePath.h"

#include <QString>

#include <vector>

namespace quillet {

/// The last component of the path, with its extension.
[[nodiscard]] QString fileName(const FilePath& path);
[[nodiscard]] QString pathText(const FilePath& path);
/// The path with "~" for the user's home directory.
[[nodiscard]] QString abbreviatedPath(const FilePath& path);
/// `text` so that a menu shows it as it is.
[[nodiscard]] QString menuText(QString text);
/// `text` so that a tooltip shows it as it is.
[[nodiscard]] QString toolTipText(const QString& text);

/// What each of `files` is called in a list of them: its name, and where two have the same name the folder as well.
[[nodiscard]] std::vector<QString> listNames(const std::vector<FilePath>& files);

/// What the toolkit calls a local file, as a path.
[[nodiscard]] FilePath pathOf(const QString& localFile);

}  // namespace quillet
