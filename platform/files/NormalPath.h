// One name for a file that can be named in several ways.
// Threads: callable from every thread; it waits for the disk only where the path has a "..".
#pragma once

#include "platform/base/FilePath.h"

namespace quillet {

/// The path made absolute, without "." and doubled slashes. A ".." goes where the file system says: to the parent of what a
/// link before it leads to. Other links stay as they are named.
[[nodiscard]] FilePath normalPath(const FilePath& path);

}  // namespace quillet
