// The head of a WAV file of 32-bit float stereo: everything in front of the samples. It has the same size for every length, so
// that it can be written first with a length not yet known and again at the end; what is longer than a 32-bit size can
// tell becomes RF64. It knows nothing of files.
// Threads: any.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace quillet {

inline constexpr std::size_t wavHeaderSize = 94;
inline constexpr std::int64_t wavBytesPerFrame = 8;

/// `sampleRate` is frames per second, `frameCount` the frames that follow, at least 0. Without a count the sizes say "until the
/// stream ends", which readers of pipes understand.
std::array<std::byte, wavHeaderSize> wavHeader(int sampleRate, std::optional<std::int64_t> frameCount);

}  // namespace quillet
