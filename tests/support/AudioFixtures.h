// Audio files for tests, made from a known signal when the test runs by the ffmpeg command, which also serves as the
// independent decoder to compare with. A failure of ffmpeg ends the test program.
// Threads: any.
#pragma once

#include "platform/base/FilePath.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

struct TestSignal {
    int sampleRate = 44'100;
    int channels = 2;
    /// Interleaved; full scale is ±1.
    std::vector<float> samples;

    [[nodiscard]] std::int64_t frames() const { return static_cast<std::int64_t>(samples.size()) / channels; }
};

/// Rising tones with struck noise over them, different on every channel, never louder than 0.7. The same on every call.
TestSignal livelySignal(int sampleRate, int channels, double seconds);

void writeBytes(const FilePath& path, std::string_view bytes);
std::string readBytes(const FilePath& path);

/// Writes `target` with ffmpeg; its extension chooses the container, `arguments` (such as {"-c:a", "libmp3lame"}) the rest.
void encodeAudio(const TestSignal& signal, const FilePath& target, const std::vector<std::string>& arguments);

/// Runs ffmpeg with `arguments`, quietly and overwriting; returns its output.
std::string runFfmpeg(const std::vector<std::string>& arguments);

/// All samples of the first audio track as ffmpeg decodes them, interleaved in the file's own channels. `decoderArguments` come
/// before the input.
std::vector<float> decodeWithFfmpeg(const FilePath& path, const std::vector<std::string>& decoderArguments = {});

}  // namespace quillet
