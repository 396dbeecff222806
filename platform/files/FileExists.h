// What there is under a path. It says nothing of whether that can be read.
// Threads: callable from every thread; it waits for the disk, so not from the main thread where the path may lead to a slow
// one.
#pragma once

#include "platform/base/FilePath.h"

namespace quillet {

/// True for a file, a folder or whatever else a link leads to; false where that cannot be found out.
[[nodiscard]] bool fileExists(const FilePath& path);

/// True for a regular file, or a link to one, that this program may execute.
[[nodiscard]] bool isExecutableFile(const FilePath& path);

}  // namespace quillet
