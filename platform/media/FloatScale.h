// What brings files of floating-point numbers into range that were written in another: some programs write whole numbers (up to
// 32768, say) where full scale is 1.
// Threads: on the thread that has the decoder.
#pragma once

#include "platform/media/AlignedDecoder.h"

#include <cstdint>

namespace quillet {

struct FloatScale {
    /// For every sample: 1, or a power of two below it.
    float factor = 1.0F;
    SampleLevel level = SampleLevel::usual;
};

/// Judged by a few places of the file, which has `length` frames; the same file is always judged the same. Only uncompressed
/// floats can be far out of range: all else is as usual, and not looked at. Leaves `decoder` at an unknown place: `enter` has
/// to follow.
[[nodiscard]] FloatScale floatScaleOf(AlignedDecoder& decoder, std::int64_t length);

/// Multiplies the samples of a block of floats or doubles in place; other formats stay as they are.
void scaleSamples(AVFrame& sound, float factor);

}  // namespace quillet
