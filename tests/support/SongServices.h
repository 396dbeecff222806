// Everything that opening a song takes, the real thing: threads, decoder, stores in a database, audio graph. Only the output is
// one that is pulled, and the scheduler the caller's choice.
// Threads: main thread.
#pragma once

#include "app/core/FileLoader.h"
#include "platform/audio/OfflineOutput.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/defaults/SqliteDefaultsDomain.h"
#include "platform/files/SystemFileAttributes.h"
#include "platform/media/FfmpegAmplitudeReader.h"
#include "platform/media/FfmpegAudioFile.h"
#include "platform/schedule/ThreadRunner.h"
#include "tests/support/TemporaryFolder.h"

#include <memory>

namespace quillet {

template <typename SchedulerType> struct SongServices {
    SchedulerType scheduler;
    ThreadRunner background;
    SqliteDefaultsDomain defaults;
    SettingsStore settings{ defaults };
    SystemFileAttributes attributes;
    WaveformCache cache{ defaults, attributes };
    StemSessionStore stemSessions{ defaults };
    RecentFilesStore recentFiles{ defaults };
    FfmpegAudioFileOpener opener;
    FfmpegAmplitudeReaderOpener readers;
    OfflineOutput output;
    PlaybackGraph graph{ output, scheduler };
    AudioEngine engine{ graph, scheduler };
    std::shared_ptr<AppState> state = std::make_shared<AppState>(scheduler, settings, engine);
    FileLoader loader{
        { *state, scheduler, background, opener, { readers, 2, {} }, cache, settings, stemSessions, recentFiles }
    };

    /// The database is in `folder`.
    explicit SongServices(const TemporaryFolder& folder)
        : defaults(folder / "defaults.sqlite")
    {
        engine.setAppState(state);
    }
};

}  // namespace quillet
