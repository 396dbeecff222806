// From FileLoader::loadFile to a loaded song, real files and a real database: with the waveform kept from before, and without.
//
//   quillet-bench-open FOLDER [ROUNDS]
//
// Prints medians over ROUNDS (15), in milliseconds; without the waveform one round. The files are made in FOLDER once (some
// 1.5 GB) and used again.

#include "bench/SongFiles.h"
#include "platform/schedule/QtScheduler.h"
#include "tests/support/SongServices.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using namespace quillet;

struct Program {
    TemporaryFolder folder;
    SongServices<QtScheduler> services{ folder };
    AppState& state = *services.state;

    double millisecondsToLoad(const FilePath& path)
    {
        const auto begin = std::chrono::steady_clock::now();
        double milliseconds = -1;
        QObject scope;
        QObject::connect(&state, &AppState::loadingStateChanged, &scope, [&] {
            if (state.loadingState().stage == LoadingState::Stage::loading)
                return;
            milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
            QCoreApplication::quit();
        });
        services.loader.loadFile(path, RestoreSettings::yes);
        QCoreApplication::exec();
        return state.loadingState() == LoadingState::loaded() ? milliseconds : -1;
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
