// Where the covers of songs lie as files for the desktop to show: a folder of the user's cache, which keeps the most recent
// ones.
// Threads: callable from every thread that may wait for a disk.
#pragma once

#include "platform/base/FilePath.h"

#include <optional>
#include <string>

namespace quillet {

/// How many covers a folder keeps.
inline constexpr std::size_t keptCovers = 20;

/// Has the picture as a file in `folder`, by a name that tells pictures apart, and removes the files that were used least
/// recently. Nothing where it cannot be written, or is none.
[[nodiscard]] std::optional<FilePath> keepCover(const FilePath& folder, const std::string& picture);

}  // namespace quillet
