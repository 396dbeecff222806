// The playing graph on an output that is pulled, with virtual time that passes as frames are pulled: the whole road of the
// samples, deterministic and faster than real time.
#pragma once

#include "platform/audio/OfflineOutput.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/schedule/VirtualScheduler.h"
#include "tests/platform/audio/PacedRig.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace quillet {

struct GraphRig {
    VirtualScheduler scheduler;
    OfflineOutput output;
    PlaybackGraph graph{ output, scheduler };
    std::unique_ptr<PlayerNode> player = graph.makePlayer();
    int sampleRate;
    int completions = 0;

    /// Frames are pulled at `rate`; a file of another rate is brought to it if `isFixed`.
    explicit GraphRig(int rate = 44100, bool isFixed = false)
        : output(isFixed ? rate : 0),
          sampleRate(rate)
    {
        graph.connect(*player, graph.timePitch());
        graph.prepare(rate);
        graph.start();
    }

    void play(const std::shared_ptr<AudioFile>& file, FrameRange segment, std::optional<FrameRange> next = std::nullopt)
    {
        {
            const GraphChange change(graph);
            player->stop();
            player->scheduleSegment(file, segment, [this] { ++completions; });
            player->play();
            if (next)
                player->setPlan(endlessly(*next));
        }
        skipDelay();
    }

    /// Takes the limiter's delay off once, so that frame 0 of a test is frame 0 of the sound.
    void skipDelay()
    {
        if (!std::exchange(m_delaySkipped, true))
            pull(Limiter::delayFrames);
    }

    /// The left channel of the next frames.
    std::vector<float> pull(std::int64_t frames, std::int64_t block = 64)
    {
        std::vector<float> left;
        std::vector<float> buffer(static_cast<std::size_t>(2 * block));
        while (std::ssize(left) < frames) {
            const auto stereo =
                std::span(buffer).first(static_cast<std::size_t>(2 * std::min(block, frames - std::ssize(left))));
            output.pull(stereo);
            for (std::size_t i = 0; i < stereo.size(); i += 2)
                left.push_back(stereo[i]);
            scheduler.advance(static_cast<double>(stereo.size()) / 2 / sampleRate);
        }
        return left;
    }

    /// Pulls until the segment has completed, at most `limit` frames.
    std::vector<float> pullToEnd(std::int64_t limit = 44100 * 60)
    {
        const int before = completions;
        std::vector<float> left;
        while (completions == before && std::ssize(left) < limit) {
            const auto more = pull(64);
            left.insert(left.end(), more.begin(), more.end());
        }
        const auto tail = pull(Limiter::delayFrames);
        left.insert(left.end(), tail.begin(), tail.end());
        return left;
    }

private:
    bool m_delaySkipped = false;
};

/// The number of frames up to the last one that is not zero.
inline std::int64_t soundingLength(const std::vector<float>& samples)
{
    auto last = std::find_if(samples.rbegin(), samples.rend(), [](float sample) { return sample != 0; });
    return samples.rend() - last;
}

/// The largest difference between neighbours in [first, last).
inline float largestStep(const std::vector<float>& samples, std::int64_t first, std::int64_t last)
{
    float largest = 0;
    for (std::int64_t i = std::max<std::int64_t>(first, 1); i < std::min<std::int64_t>(last, std::ssize(samples)); ++i)
        largest = std::max(largest, std::abs(samples[static_cast<std::size_t>(i)] - samples[static_cast<std::size_t>(i - 1)]));
    return largest;
}

}  // namespace quillet
