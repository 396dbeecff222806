// What the renderer tells the output stage about the frames in the output ring, in the order of the frames: where a take begins
// and ends, where a pass ends, and which source frame is heard where.
// Threads: plain values, pushed by the render thread and popped by the device callback.
#pragma once

#include "platform/base/SpscQueue.h"

#include <cstdint>

namespace quillet {

struct OutputMark {
    enum class Kind : std::uint8_t {
        /// The first frame of a take.
        takeBegin,
        /// The first frame behind a pass that another one follows.
        passEnd,
        /// The first frame behind a take.
        takeEnd,
        /// From here on, a source position and the source frames per output frame.
        position,
    };

    Kind kind = Kind::position;
    /// The place in the output ring.
    std::int64_t outputFrame = 0;
    std::int64_t epoch = 0;
    /// takeBegin: frames to be in the ring before the sound starts.
    std::int64_t framesNeeded = 0;
    /// passEnd, takeEnd: where the frames begin that fade over into the next pass, also into one that was called off since.
    std::int64_t cutFrame = 0;
    /// Source frames since the take's start, and their rate.
    double sourceFrame = 0;
    double slope = 0;
};

using OutputMarks = SpscQueue<OutputMark, 1024>;

}  // namespace quillet
