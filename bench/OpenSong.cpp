// From FileLoader::loadFile to a loaded song, real files and a real database: with the waveform kept from before, and without.
//
//   quillet-bench-open FOLDER [ROUNDS]
//
// Prints medians over ROUNDS (15), in milliseconds; without the waveform one round. The files are made in FOLDER once (some
// 1.5 GB) and used again.

#include "app/core/FileLoader.h"
#include "bench/SongFiles.h"
#include "platform/audio/OfflineOutput.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/defaults/SqliteDefaultsDomain.h"
#include "platform/files/SystemFileAttributes.h"
#include "platform/media/FfmpegAmplitudeReader.h"
#include "platform/media/FfmpegAudioFile.h"
#include "platform/schedule/QtScheduler.h"
#include "platform/schedule/ThreadRunner.h"
#include "tests/support/TemporaryFolder.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace quillet;

/// Everything that opening a song takes, the real thing; only the output is one that is pulled.
struct Program {
    TemporaryFolder folder;
    QtScheduler scheduler;
    ThreadRunner background;
    SqliteDefaultsDomain defaults{ folder / "defaults.sqlite" };
    SettingsStore settings{ defaults };
    SystemFileAttributes attributes;
    WaveformCache cache{ defaults, attributes };
    StemSessionStore stemSessions{ defaults };
    StemMixStore stemMixes{ defaults };
    PracticeStore practices{ defaults };
    RecentFilesStore recentFiles{ defaults };
    FfmpegAudioFileOpener opener;
    FfmpegAmplitudeReaderOpener readers;
    OfflineOutput output;
    PlaybackGraph graph{ output, scheduler };
    AudioEngine engine{ graph, scheduler };
    std::shared_ptr<AppState> state =
        std::make_shared<AppState>(scheduler, SettingsSaver::Stores{ settings, stemSessions, stemMixes, practices }, engine);
    FileLoader loader{ { *state,
                         scheduler,
                         background,
                         opener,
                         { readers, 2, {} },
                         cache,
                         settings,
                         stemSessions,
                         recentFiles,
                         stemMixes,
                         attributes,
                         practices } };

    Program() { engine.setAppState(state); }

    double millisecondsToLoad(const FilePath& path)
    {
        const auto begin = std::chrono::steady_clock::now();
        double milliseconds = -1;
        QObject scope;
        QObject::connect(state.get(), &AppState::loadingStateChanged, &scope, [&] {
            if (state->loadingState().stage == LoadingState::Stage::loading)
                return;
            milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
            QCoreApplication::quit();
        });
        loader.loadFile(path, RestoreSettings::yes);
        QCoreApplication::exec();
        return state->loadingState() == LoadingState::loaded() ? milliseconds : -1;
    }
};

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fputs("usage: quillet-bench-open FOLDER [ROUNDS]\n", stderr);
        return 2;
    }
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 15;
    const QCoreApplication application(argc, argv);
    Program program;
    std::puts("| file | waveform kept | computed |\n|---|---|---|");
    for (const int minutes : { 5, 60 })
        for (const SongFormat& format : songFormats()) {
            const FilePath path = madeSong(argv[1], minutes, format);
            const double computed = program.millisecondsToLoad(path);
            std::vector<double> kept;
            for (int round = 0; round < rounds; ++round)
                kept.push_back(program.millisecondsToLoad(path));
            std::ranges::sort(kept);
            std::printf("| %d min %s | %.1f | %.0f |\n", minutes, format.name, kept[kept.size() / 2], computed);
            std::fflush(stdout);
        }
    return 0;
}
