// One run of the engine for the command line: opens the file, puts the options into a state of its own and plays it through.
// The user's saved settings are neither read nor written.
// Threads: main thread.
#pragma once

#include "AppCore/SettingsStore.h"
#include "app/cli/PlaybackOptions.h"
#include "app/core/AppState.h"
#include "app/playback/AudioEngine.h"
#include "platform/audio/AudioGraph.h"
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "platform/media/AudioFile.h"
#include "platform/schedule/Scheduler.h"

#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace quillet {

class PlaybackSession {
public:
    /// All three outlive the session.
    PlaybackSession(AudioGraph& graph, AudioFileOpener& opener, Scheduler& scheduler);

    /// Opens the file and sets everything up; fails with a sentence for the user.
    [[nodiscard]] std::expected<void, std::string> open(const PlaybackOptions& options);
    /// Begins to play. `finished` is called once, when the last pass has been handed over to its last frame.
    void start(std::function<void()> finished);
    /// Ends the sound.
    void stop() { m_engine.stop(); }

    [[nodiscard]] const AudioFile& file() const { return *m_engine.audioFile(); }
    [[nodiscard]] const AppState& state() const { return *m_state; }
    /// How long it all takes to play, pauses included.
    [[nodiscard]] double playingSeconds() const;

private:
    void setUp(const PlaybackOptions& options, double durationSeconds);

    AudioFileOpener& m_opener;
    MemoryDefaultsDomain m_defaults;
    SettingsStore m_settings{ m_defaults };
    AudioEngine m_engine;
    std::shared_ptr<AppState> m_state;
    PlaybackOptions m_options;
};

}  // namespace quillet
