// One playing of a file from its options: opens the file, puts the options into a state of its own and plays it through.
// The user's saved settings are neither read nor written.
// Threads: main thread.
#pragma once

#include "AppCore/SettingsStore.h"
#include "AppCore/StemMixStore.h"
#include "AppCore/StemSessionStore.h"
#include "app/core/AppState.h"
#include "app/export/PlaybackOptions.h"
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
    void start(const std::function<void()>& finished);
    /// Ends the sound.
    void stop() { m_state->stopReset(); }

    [[nodiscard]] const AudioFile& file() const { return *m_file; }
    [[nodiscard]] const AppState& state() const { return *m_state; }
    /// How long it all takes to play, pauses included.
    [[nodiscard]] double playingSeconds() const;

private:
    [[nodiscard]] std::expected<void, std::string> enterStemMode(const PlaybackOptions& options);
    void setUp(const PlaybackOptions& options);

    AudioFileOpener& m_opener;
    MemoryDefaultsDomain m_defaults;
    SettingsStore m_settings{ m_defaults };
    StemSessionStore m_stemSessions{ m_defaults };
    StemMixStore m_stemMixes{ m_defaults };
    PracticeStore m_practices{ m_defaults };
    AudioEngine m_engine;
    std::shared_ptr<AppState> m_state;
    std::shared_ptr<AudioFile> m_file;
    PlaybackOptions m_options;
};

}  // namespace quillet
