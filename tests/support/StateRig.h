// The state over an engine whose graph sounds nothing, in virtual time: with a file of 8000 Hz, whole as the region, nothing
// playing and nothing to save.
// Threads: one.
#pragma once

#include "app/core/AppState.h"
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "platform/schedule/VirtualScheduler.h"
#include "tests/support/FakeAudioGraph.h"
#include "tests/support/MemoryAudioFile.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillet {

struct StateRig {
    static constexpr const char* song = "/music/song.flac";
    static constexpr int sampleRate = 8000;

    VirtualScheduler scheduler;
    MemoryDefaultsDomain defaults;
    SettingsStore settings{ defaults };
    FakeAudioGraph graph;
    AudioEngine engine{ graph, scheduler };
    std::shared_ptr<AppState> state = std::make_shared<AppState>(scheduler, settings, engine);

    explicit StateRig(double durationSeconds = 10)
    {
        engine.setAppState(state);
        open(durationSeconds);
    }

    void open(double durationSeconds)
    {
        const auto samples = static_cast<std::size_t>(2 * sampleRate * durationSeconds);
        engine.setAudioFile(std::make_shared<MemoryAudioFile>(sampleRate, std::vector<float>(samples)));
        state->setAudioFileURL(song);
        state->setAudioDuration(durationSeconds);
        state->resetToDefaults(durationSeconds);
        scheduler.advance(1);
        defaults.remove(std::string("settings.") + song);
    }

    /// What sounds, in seconds; nothing when the player rests.
    [[nodiscard]] std::optional<std::pair<double, double>> sounding() const
    {
        const auto& player = *graph.players.front();
        if (!player.isSounding)
            return std::nullopt;
        const double start = static_cast<double>(player.segment->start) / sampleRate;
        return std::pair(start, start + static_cast<double>(player.segment->count) / sampleRate);
    }
    [[nodiscard]] int starts() const { return graph.players.front()->scheduleCount; }
};

}  // namespace quillet
