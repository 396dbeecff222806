// An engine over a fake graph in virtual time, with a state of plain fields and a silent file of ten seconds.
#pragma once

#include "app/playback/AudioEngine.h"
#include "platform/schedule/VirtualScheduler.h"
#include "tests/support/FakeAudioFileOpener.h"
#include "tests/support/FakeAudioGraph.h"
#include "tests/support/MemoryAudioFile.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace quillet {

struct PlainPlaybackState final : PlaybackState {
    bool hold = false;
    double holdAt = 0;
    double start = 2;
    double end = 4;
    bool loop = true;
    std::int64_t delaySeconds = 0;
    std::int64_t delayMilliseconds = 0;
    bool isPlaying = true;
    double position = -1;
    int ends = 0;

    [[nodiscard]] bool holdEnabled() const override { return hold; }
    [[nodiscard]] double holdPosition() const override { return holdAt; }
    [[nodiscard]] TimeRange region() const override { return { start, end }; }
    [[nodiscard]] bool loopEnabled() const override { return loop; }
    [[nodiscard]] std::int64_t loopDelaySeconds() const override { return delaySeconds; }
    [[nodiscard]] std::int64_t loopDelayMilliseconds() const override { return delayMilliseconds; }
    void setIsPlaying(bool playing) override { isPlaying = playing; }
    void setPlaybackPosition(double positionSeconds) override { position = positionSeconds; }
    void playbackDidEnd() override { ++ends; }
};

struct EngineRig {
    static constexpr int sampleRate = 48000;

    VirtualScheduler scheduler;
    FakeAudioGraph graph;
    FakeAudioFileOpener opener;
    std::shared_ptr<PlainPlaybackState> state = std::make_shared<PlainPlaybackState>();
    std::optional<AudioEngine> engine;

    EngineRig()
    {
        engine.emplace(graph, scheduler);
        engine->setAppState(state);
        engine->setAudioFile(file(sampleRate, 10));
    }

    static std::shared_ptr<AudioFile> file(int rate, int seconds)
    {
        return std::make_shared<MemoryAudioFile>(
            rate, std::vector<float>(std::size_t{ 2 } * static_cast<std::size_t>(rate * seconds)));
    }

    static FrameRange frames(double fromSeconds, double toSeconds)
    {
        const auto start = static_cast<std::int64_t>(fromSeconds * sampleRate);
        return { start, static_cast<std::int64_t>(toSeconds * sampleRate) - start };
    }

    FakeAudioGraph::Node& player() { return *graph.players.front(); }
    void playRegion() { engine->play(state->start, state->end); }
    void complete() { FakeAudioGraph::complete(player()); }
};

}  // namespace quillet
