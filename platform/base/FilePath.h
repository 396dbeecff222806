// The name of a file. Paths are bytes, as the kernel has them: nothing here assumes that they are UTF-8, and the only
// lossy step is the one that turns a path into text for a person.
#pragma once

#include <filesystem>
#include <string>

namespace quillet {

using FilePath = std::filesystem::path;

/// The path for a message or a title: valid UTF-8, every byte that is not part of a well-formed character shown as U+FFFD,
/// and control characters (a line break in a name, say) as a space.
std::string displayText(const FilePath& path);

}  // namespace quillet
