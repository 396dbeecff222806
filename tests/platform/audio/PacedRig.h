// The playing graph on a device that asks for blocks of a size of its own and does not wait for what is new: only what sounds
// already is never late, however busy the machine is. Time passes when a test says so, so that a main thread can be late.
// Threads: main thread.
#pragma once

#include "platform/audio/OutputStage.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/schedule/VirtualScheduler.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <thread>
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

struct PacedRig {
    VirtualScheduler scheduler;
    PacedOutput output;
    PlaybackGraph graph{ output, scheduler };
    std::unique_ptr<PlayerNode> player = graph.makePlayer();
    std::int64_t block;
    int completions = 0;
    /// Everything pulled.
    std::vector<float> left, right;

    explicit PacedRig(std::int64_t blockFrames = 282, int rate = 44100)
        : output(rate),
          block(blockFrames)
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
