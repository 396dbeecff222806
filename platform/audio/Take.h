// One uninterrupted run of sound: a segment of one or several files in step (the stems), and the passes that follow it without
// a gap while they are wanted. The source thread fills its ring, the renderer empties it; a new `play` makes a new take, so
// nothing stale has to be searched for in a ring.
// Threads: shared by the main, source and render threads; each member says who touches it.
#pragma once

#include "platform/audio/AudioGraph.h"
#include "platform/audio/AudioRing.h"
#include "platform/base/SpscQueue.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace quillet {

/// A linear factor shared by a mixer (main thread) and the renderer.
struct SharedGain {
    std::atomic<float> factor{ 1 };
};

/// One file of a take, with the mixers on its way.
struct TakeSource {
    std::shared_ptr<AudioFile> file;
    std::vector<std::shared_ptr<const SharedGain>> gains;
};

/// Where a pass ends, in frames since the take's start.
struct PassEnd {
    std::int64_t frame = 0;
    /// The frames before it that fade over into the next pass.
    std::int64_t joint = 0;
    /// Nothing follows: the take ends here.
    bool last = false;
};

/// The segments that a take has begun to deliver, one behind the other.
struct Pass {
    FrameRange segment;
    /// Frames of the take before it.
    std::int64_t startFrame = 0;
};

class Take {
public:
    Take(std::int64_t epoch, int sampleRate, std::vector<TakeSource> sources, FrameRange segment);

    // Never change.
    const std::int64_t epoch;
    const int sampleRate;
    const std::vector<TakeSource> sources;

    /// Source thread to render thread: frames of 2 samples per source, in the order of `sources`.
    AudioRing ring;
    /// Source thread to render thread, pushed before the frames around the end are in the ring.
    SpscQueue<PassEnd, 256> passEnds;

    /// Raised on the main thread, for good: no further end of a pass may be crossed, what was written behind it is not heard.
    std::atomic<bool> closed{ false };

    // ---- Main and source thread, under the lock ----

    /// The segment that is to follow the last pass begun.
    [[nodiscard]] std::optional<FrameRange> next() const;
    void setNext(std::optional<FrameRange> segment);
    /// Begins the next pass `startFrame` frames after the take's start, if one is wanted that has at least `shortest` frames.
    std::optional<FrameRange> beginNextPass(std::int64_t startFrame, std::int64_t shortest);
    /// The passes begun so far; the first is number 0.
    [[nodiscard]] std::int64_t passCount() const;
    [[nodiscard]] Pass pass(std::int64_t number) const;

private:
    mutable std::mutex m_lock;
    std::optional<FrameRange> m_next;
    /// Only the newest passes are kept; older ones are forgotten from the front.
    std::vector<Pass> m_passes;
    std::int64_t m_forgotten = 0;
};

}  // namespace quillet
