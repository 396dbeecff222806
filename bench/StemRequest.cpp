// How soon a second request for a song that is separated already is answered: from `separate` to its end, with the real disk
// and the real main thread's loop. The files are six empty ones, as only whether they are there, and the song's size and time,
// is asked.
//
//   quillet-bench-stem-request [REQUESTS]
//
// Prints the median and the slowest of REQUESTS (200), in milliseconds.

#include "AppCore/StemSession.h"
#include "app/stems/StemSeparator.h"
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "platform/files/SystemFileAttributes.h"
#include "platform/process/QtProcessRunner.h"
#include "platform/schedule/QtScheduler.h"
#include "platform/schedule/ThreadRunner.h"
#include "tests/support/TemporaryFolder.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <vector>

int main(int argc, char** argv)
{
    using namespace quillet;
    using Kind = StemSeparationPhase::Kind;
    const int requests = argc > 1 ? std::max(1, std::atoi(argv[1])) : 200;
    const QCoreApplication application(argc, argv);

    const TemporaryFolder folder;
    const FilePath song = folder / "song.wav";
    MemoryDefaultsDomain defaults;
    defaults.setString("QLT.stemsDirectory", (folder / "stems").native());
    const StemSettingsStore settings{ defaults };
    const SystemFileAttributes attributes;
    QtProcessRunner processes;
    ThreadRunner background;
    QtScheduler scheduler;
    StemSeparator separator{ { processes, background, scheduler, settings, attributes, {}, {} } };

    std::ofstream{ song } << "sound";
    const StemFolder stems = separator.folderOf(song);
    const FilePath place = stems.path() / "htdemucs_6s" / "song";
    std::filesystem::create_directories(place);
    for (const auto key : StemSession::keys)
        std::ofstream{ place / (std::string(key) + ".wav") };
    stems.recordSong(*attributes.attributes(song));

    std::vector<double> milliseconds;
    for (int request = 0; request < requests; ++request) {
        const auto begin = std::chrono::steady_clock::now();
        separator.separate(song);
        while (separator.isRunning())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (separator.phase().kind != Kind::complete) {
            std::fprintf(stderr, "The stems were not found: %s\n", separator.phase().message.c_str());
            return 1;
        }
        milliseconds.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count());
        separator.reset();
    }
    std::ranges::sort(milliseconds);
    std::printf("a second request: %.2f ms in the median, %.2f at worst\n", milliseconds[milliseconds.size() / 2],
                milliseconds.back());
    return 0;
}
