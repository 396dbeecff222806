// `quillet waveform`: prints the amplitudes of a file as JSON, or draws them into a picture.
// Threads: main thread; it waits for the threads that decode.
#pragma once

#include "platform/base/FilePath.h"

#include <expected>
#include <optional>
#include <string>

namespace quillet {

struct WaveformOptions {
    FilePath input;
    /// The PNG file to draw; nothing: print JSON on standard output.
    std::optional<FilePath> picture;
};

/// The exit status, or a sentence for the user.
[[nodiscard]] std::expected<int, std::string> showWaveform(const WaveformOptions& options);

}  // namespace quillet
