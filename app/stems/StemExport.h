// Copies separated stems to where the user wants them.
// Threads: any thread that may wait for a disk.
#pragma once

#include "app/stems/StemFolder.h"
#include "platform/base/FilePath.h"

#include <expected>
#include <string>

namespace quillet {

/// Puts a copy of each stem into the folder "<song's name> Stems" in `folder`, which is made where it is missing, as
/// "Vocals.wav" and so on; a copy that is there and as long is left alone. Returns that folder, or one sentence that says why
/// not all could be copied; no half of a file is left.
[[nodiscard]] std::expected<FilePath, std::string> exportStems(const StemFolder::Stems& stems, const FilePath& song,
                                                               const FilePath& folder);

}  // namespace quillet
