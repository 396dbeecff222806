// Sums of the absolute values of decoded sound, mixed to one channel, taken from the decoder's own sample format. All are sums
// of integers (floats are cut to 1/2^36 of full scale first), so that they do not depend on where the sound is cut.
// Threads: pure functions.
#pragma once

#include "platform/media/FfmpegHandles.h"

#include <cstdint>
#include <optional>
#include <span>

namespace quillet {

/// Of frames [first, first + frames) of `sound`, which has them: the sum of |left + right| / 2, or |sample| of a single
/// channel; full scale is 1. Floats that are no numbers, or absurd, count as 0. Nothing for formats with more channels, or of a
/// kind that is not dealt with here.
[[nodiscard]] std::optional<double> amplitudeSum(const AVFrame& sound, std::int64_t first, std::int64_t frames);

/// The same of interleaved stereo.
[[nodiscard]] double amplitudeSum(std::span<const float> stereo);

}  // namespace quillet
