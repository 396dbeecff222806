// What the renderer tells about the frames in the output ring, in the order of the frames: to the device callback where a run
// begins and ends and where a pass ends; to the main thread which frame of the run's stream is heard where.
// Threads: plain values, pushed by the render thread; marks are popped by the device callback, places by the main thread.
#pragma once

#include "platform/audio/PositionMap.h"
#include "platform/base/SpscQueue.h"

#include <cstdint>

namespace quillet {

struct OutputMark {
    enum class Kind : std::uint8_t {
        /// The first frame of a run.
        runBegin,
        /// The first frame after a pass that another one follows.
        passEnd,
        /// The first frame after a run.
        runEnd,
    };

    Kind kind = Kind::runBegin;
    /// The place in the output ring.
    std::int64_t outputFrame = 0;
    std::int64_t generation = 0;
    /// runBegin: frames to be in the ring before the sound starts; frames a second; and the place in the ring, in the run
    /// before, that the run's first frame stands for (-1: none, it is heard from its first frame on).
    std::int64_t framesNeeded = 0;
    int sampleRate = 0;
    std::int64_t alignedFrame = -1;
};

using OutputMarks = SpscQueue<OutputMark, 1024>;

/// A piece of the map from places in the output ring to frames of a run's stream.
struct OutputPlace {
    std::int64_t generation = 0;
    MapPiece piece;
};

using OutputPlaces = SpscQueue<OutputPlace, 1024>;

}  // namespace quillet
