// The shape of every fade in the sound's road: half a raised cosine, whose pair of rising and falling weights adds up to one.
// Threads: pure, any thread.
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>

namespace quillet {

/// The rising weight of frame `index` (0 to length - 1) of a fade of `length` frames: strictly between 0 and 1; 1 after the
/// end. The falling weight is 1 minus it.
[[nodiscard]] inline float rampWeight(std::int64_t index, std::int64_t length) noexcept
{
    if (index >= length)
        return 1;
    const double phase = (static_cast<double>(index) + 1) / (static_cast<double>(length) + 1);
    return static_cast<float>(0.5 - 0.5 * std::cos(std::numbers::pi * phase));
}

}  // namespace quillet
