// `quillet render`: writes what the engine would play to a file, through the same graph, faster than real time.
// Threads: main thread; returns when it is done.
#pragma once

#include "app/export/PlaybackOptions.h"

#include <expected>
#include <string>

namespace quillet {

/// Returns the exit status, or a sentence for the user. On failure or interruption nothing is left under the output's name.
[[nodiscard]] std::expected<int, std::string> renderFile(const RenderOptions& options);

}  // namespace quillet
