// What the tests of views share: a state over a graph that sounds nothing, with a file of ten seconds, and a theme.
#pragma once

#include "app/core/AppState.h"
#include "app/core/PlaybackCommands.h"
#include "app/ui/ThemeSource.h"
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "platform/schedule/VirtualScheduler.h"
#include "tests/support/FakeAudioGraph.h"
#include "tests/support/MemoryAudioFile.h"

#include <memory>
#include <vector>

namespace quillet {

struct WindowRig {
    VirtualScheduler scheduler;
    MemoryDefaultsDomain defaults;
    SettingsStore settings{ defaults };
    FakeAudioGraph graph;
    AudioEngine engine{ graph, scheduler };
    std::shared_ptr<AppState> state = std::make_shared<AppState>(scheduler, settings, engine);
    PlaybackCommands commands{ *state, engine };
    ThemeSource theme;

    explicit WindowRig(double durationSeconds = 10)
    {
        engine.setAppState(state);
        const auto samples = static_cast<std::size_t>(2 * 8000 * durationSeconds);
        engine.setAudioFile(std::make_shared<MemoryAudioFile>(8000, std::vector<float>(samples)));
        state->setAudioFileURL("/music/song.flac");
        state->setAudioDuration(durationSeconds);
        state->setWaveformSamples(std::vector<float>(2000, 0.5F));
        state->resetToDefaults(durationSeconds);
        state->setLoadingState(LoadingState::loaded());
    }

    /// What plays, in seconds; nothing when nothing does.
    [[nodiscard]] std::optional<std::pair<double, double>> sounding() const
    {
        const auto& player = *graph.players.front();
        if (!player.isSounding)
            return std::nullopt;
        const double start = static_cast<double>(player.segment->start) / 8000;
        return std::pair(start, start + static_cast<double>(player.segment->count) / 8000);
    }
    [[nodiscard]] int starts() const { return graph.players.front()->scheduleCount; }
};

}  // namespace quillet
