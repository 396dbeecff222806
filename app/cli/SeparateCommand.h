// `quillet separate`: makes the stems of songs, one after the other, where the window keeps and finds them too.
// Threads: main thread.
#pragma once

#include "platform/base/FilePath.h"

#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace quillet {

struct SeparateOptions {
    std::vector<FilePath> songs;
    /// Gets a copy of the stems of each song.
    std::optional<FilePath> output;
};

/// The exit status: 1 if a song could not be separated, which does not keep the others from it; that of an interruption.
[[nodiscard]] std::expected<int, std::string> separateSongs(const SeparateOptions& options);

}  // namespace quillet
