// One uninterrupted run of sound: a segment of one or several files in step (the stems), and the passes that follow it by plan.
// The source thread fills its ring, the renderer empties it; anything that cannot go on from there is a new run, so nothing
// stale has to be searched for in a ring. Frames are those of the graph's sample rate; frames of the stream are counted from
// the run's first frame that is heard.
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

/// One file of a run, at the graph's sample rate, with the mixers on its way.
struct RunSource {
    std::shared_ptr<AudioFile> file;
    std::vector<std::shared_ptr<const SharedGain>> gains;
};

/// What a pass has in place of the time-pitch unit's settings.
struct PassSettings {
    std::optional<double> rate = std::nullopt;
    std::optional<double> pitchCents = std::nullopt;
    bool operator==(const PassSettings&) const = default;
};

/// A pass in frames of the graph.
struct Pass {
    FrameRange segment;
    /// Silence before it.
    std::int64_t pauseFrames = 0;
    PassSettings own;
    bool held = false;
    bool operator==(const Pass&) const = default;
};

/// The passes that follow, each with how often.
struct RunPlan {
    struct Entry {
        Pass pass;
        std::int64_t times = 1;
        bool operator==(const Entry&) const = default;
    };
    std::vector<Entry> entries;
    /// The number of the run's last pass, whatever the entries say.
    std::int64_t lastPass = INT64_MAX;

    /// Takes the next pass out, if there is one; it is to be pass `number` of the run.
    std::optional<Pass> takeNext(std::int64_t number);
};

/// Where a pass of a run begins in its stream.
struct PlacedPass {
    Pass pass;
    std::int64_t startFrame = 0;
};

/// Where a pass ends in the stream, and how it goes on there.
struct PassEnd {
    std::int64_t frame = 0;
    /// Nothing follows: the run ends here.
    bool last = false;
    std::int64_t pauseFrames = 0;
    PassSettings nextOwn;
};

class Run {
public:
    /// Where a run begins: within its first pass, and after a silence.
    struct Start {
        std::int64_t offsetFrames = 0;
        std::int64_t pauseFrames = 0;
        /// The frame of the output ring that the run's first frame stands for, if it goes on from a run before it.
        std::optional<std::int64_t> alignedFrame;
    };

    Run(std::int64_t generation, int sampleRate, std::vector<RunSource> sources, Pass first, Start start, RunPlan plan);

    // Never change.
    const std::int64_t generation;
    const int sampleRate;
    const std::vector<RunSource> sources;
    const Start start;
    /// Frames before the first one that the ring begins with: what was heard before, for whoever needs to look back.
    const std::int64_t leadFrames;

    /// Source thread to render thread: frames of 2 samples per source, in the order of `sources`.
    AudioRing ring;
    /// Source thread to render thread, pushed before the frames around the end are in the ring.
    SpscQueue<PassEnd, 1024> passEnds;

    // ---- Main and source thread, under the lock ----

    /// Makes `plan` what follows pass `number`, if that is still possible: the passes begun since must be just what it says.
    [[nodiscard]] bool replan(std::int64_t number, RunPlan plan);
    /// Begins the next pass at `startFrame` of the stream, if the plan has one; after the last one there is no way on.
    std::optional<Pass> beginNextPass(std::int64_t startFrame);
    /// The newest `keptPasses` are known; asked for an older one it answers with the oldest of them.
    [[nodiscard]] PlacedPass pass(std::int64_t number) const;

private:
    mutable std::mutex m_lock;
    RunPlan m_plan;
    bool m_lastBegun = false;
    std::vector<PlacedPass> m_passes;
    /// How many passes were forgotten from the front.
    std::int64_t m_forgotten = 0;
};

}  // namespace quillet
