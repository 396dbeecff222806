// `quillet play`: plays to the machine's sound device until the last pass has been heard, or until it is interrupted.
// Threads: main thread; runs the event loop and returns when it is done.
#pragma once

#include "app/export/PlaybackOptions.h"

#include <expected>
#include <string>

namespace quillet {

/// Returns the exit status, or a sentence for the user. A QCoreApplication exists.
[[nodiscard]] std::expected<int, std::string> playFile(const PlaybackOptions& options);

}  // namespace quillet
