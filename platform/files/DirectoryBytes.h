// How much a folder takes.
// Threads: callable from every thread that may wait for a disk.
#pragma once

#include "platform/base/FilePath.h"

#include <cstdint>

namespace quillet {

/// The sizes of all files below `directory`, in bytes. Links are not followed, and what cannot be read counts nothing.
[[nodiscard]] std::int64_t directoryBytes(const FilePath& directory);

}  // namespace quillet
