// The playing graph on two outputs, with virtual time that passes as frames are pulled. GraphRig waits for every frame: the
// whole road of the samples, deterministic and faster than real time. PacedRig's device asks for blocks of a size of its own
// and does not wait for what is new: only what sounds already is never late, however busy the machine is.
// Threads: main thread.
#pragma once

#include "platform/audio/OfflineOutput.h"
#include "platform/audio/OutputStage.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/schedule/VirtualScheduler.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <memory>
#include <span>
#include <thread>
#include <utility>
#include <vector>

namespace quillet {

class PacedOutput final : public AudioOutput {
public:
    explicit PacedOutput(int rate)
        : m_rate(rate)
    {
    }

    void start(OutputCallback& callback, std::function<void(State)>) override
    {
        m_stage = dynamic_cast<OutputStage*>(&callback);
    }
    void stop() override { }
    [[nodiscard]] int sampleRate() const override { return m_rate; }
    void setSampleRate(int) override { }
    void suspend() override { ++suspensions; }
    void resume() override { suspensions = 0; }
    [[nodiscard]] double latencySeconds() const override { return 0; }
    [[nodiscard]] bool isRealTime() const override { return false; }

    /// One block, as soon as what sounds is there for it; of what is not entered yet at most 50 ms are waited for.
    void pull(std::span<float> stereo)
    {
        const auto frames = static_cast<std::int64_t>(stereo.size()) / 2;
        const auto entered = [&] { return m_stage->report().moving && m_stage->ring().available() >= frames; };
        for (int i = 0; i < (m_stage->report().moving ? 10000 : 50) && !entered() && !m_stage->isReady(frames); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        m_stage->render(stereo);
    }
    /// Whatever there is.
    void pullAtOnce(std::span<float> stereo) { m_stage->render(stereo); }
    /// Until what is wanted could be entered by a block of so many frames.
    void waitUntilReady(std::int64_t frames)
    {
        for (int i = 0; i < 10000 && !m_stage->isReady(frames); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    /// Until the ring holds two blocks, as it does by the time a device asks for the next one.
    void settle(std::int64_t frames)
    {
        for (int i = 0; i < 2000 && m_stage->ring().available() < 2 * frames; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    int suspensions = 0;

private:
    int m_rate;
    OutputStage* m_stage = nullptr;
};

/// A graph with one player on an output.
template <typename Output> struct SoundingGraph {
    VirtualScheduler scheduler;
    Output output;
    PlaybackGraph graph{ output, scheduler };
    std::unique_ptr<PlayerNode> player = graph.makePlayer();
    int completions = 0;

    explicit SoundingGraph(int outputRate)
        : output(outputRate)
    {
        graph.connect(*player, graph.timePitch());
        graph.start();
    }

    void play(const std::shared_ptr<AudioFile>& file, FrameRange segment, const PassPlan& plan = {})
    {
        const GraphChange change(graph);
        player->stop();
        player->scheduleSegment(file, segment, [this] { ++completions; });
        player->play();
        player->setPlan(plan);
    }
};

struct GraphRig : SoundingGraph<OfflineOutput> {
    int sampleRate;
    /// Everything pulled, the left channel of it; frame 0 is frame 0 of the sound.
    std::vector<float> heard;

    explicit GraphRig(int rate = 44100)
        : SoundingGraph(0),
          sampleRate(rate)
    {
        graph.prepare(rate);
    }

    /// The left channel of the next frames.
    std::vector<float> pull(std::int64_t frames, std::int64_t block = 64)
    {
        std::vector<float> left;
        std::vector<float> buffer(static_cast<std::size_t>(2 * block));
        for (std::int64_t wanted = frames + std::exchange(m_delay, 0); std::ssize(left) < wanted;) {
            const auto stereo =
                std::span(buffer).first(static_cast<std::size_t>(2 * std::min(block, wanted - std::ssize(left))));
            output.pull(stereo);
            for (std::size_t i = 0; i < stereo.size(); i += 2)
                left.push_back(stereo[i]);
            scheduler.advance(static_cast<double>(stereo.size()) / 2 / sampleRate);
        }
        left.erase(left.begin(), left.end() - frames);
        heard.insert(heard.end(), left.begin(), left.end());
        return left;
    }

    /// Pulls until the segment has completed and is heard to its end.
    const std::vector<float>& pullToEnd()
    {
        for (const int before = completions; completions == before && std::ssize(heard) < 44100 * 60;)
            pull(64);
        pull(Limiter::delayFrames);
        return heard;
    }

private:
    std::int64_t m_delay = Limiter::delayFrames;
};

struct PacedRig : SoundingGraph<PacedOutput> {
    std::int64_t block;
    /// Everything pulled.
    std::vector<float> left, right;

    explicit PacedRig(std::int64_t blockFrames = 282, int rate = 44100)
        : SoundingGraph(rate),
          block(blockFrames)
    {
    }

    /// Time passes when a test says so if the main thread is late.
    enum class Main { punctual, late };
    void pull(std::int64_t frames, Main mainThread = Main::punctual)
    {
        std::vector<float> stereo(static_cast<std::size_t>(2 * block));
        for (std::int64_t done = 0; done < frames; done += block) {
            output.pull(stereo);
            for (std::size_t i = 0; i < stereo.size(); i += 2) {
                left.push_back(stereo[i]);
                right.push_back(stereo[i + 1]);
            }
            if (mainThread == Main::punctual)
                scheduler.advance(static_cast<double>(block) / output.sampleRate());
        }
    }
    void pullSeconds(double seconds) { pull(static_cast<std::int64_t>(seconds * output.sampleRate())); }
    void settle() { output.settle(block); }
    void waitUntilReady() { output.waitUntilReady(block); }
};

/// A plan of one pass that is repeated.
inline PassPlan endlessly(FrameRange segment, double pauseSeconds = 0)
{
    PlannedPass pass;
    pass.segment = segment;
    pass.pauseSeconds = pauseSeconds;
    pass.times = PlannedPass::endless;
    return { { pass }, std::nullopt };
}

/// The longest stretch of [first, last) in which nothing is as loud as `level`, in frames.
inline std::int64_t longestHole(std::span<const float> samples, std::int64_t first, std::int64_t last, float level = 0.01F)
{
    std::int64_t longest = 0;
    std::int64_t present = 0;
    for (std::int64_t i = first; i < last; ++i) {
        present = std::abs(samples[static_cast<std::size_t>(i)]) < level ? present + 1 : 0;
        longest = std::max(longest, present);
    }
    return longest;
}

}  // namespace quillet
