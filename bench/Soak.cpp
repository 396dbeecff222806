// Plays to the real sound device while other processes load every core, and counts how often the sound ran dry.
//
//   quillet-bench-soak SONG RATE SECONDS [BUSY-LOOPS]

#include "platform/audio/CubebOutputDevice.h"
#include "platform/audio/LiveOutput.h"
#include "platform/audio/NullOutputDevice.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/media/FfmpegAudioFile.h"
#include "platform/schedule/QtScheduler.h"

#include <QCoreApplication>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace quillet;

namespace {

std::vector<pid_t> startBusyLoops(int count)
{
    std::vector<pid_t> children;
    for (int i = 0; i < count; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            for (volatile unsigned spin = 0;;)
                static_cast<void>(spin);
        }
        children.push_back(child);
    }
    return children;
}

}  // namespace

int main(int argc, char* argv[])
{
    if (argc < 4) {
        std::fprintf(stderr, "usage: %s SONG RATE SECONDS [BUSY-LOOPS]\n", argv[0]);
        return 2;
    }
    const double rate = std::atof(argv[2]);
    const double seconds = std::atof(argv[3]);
    const auto loops = startBusyLoops(argc > 4 ? std::atoi(argv[4]) : 4);

    const QCoreApplication application(argc, argv);
    auto opened = FfmpegAudioFileOpener().open(argv[1]);
    if (!opened) {
        std::fprintf(stderr, "%s\n", describe(opened.error(), argv[1]).c_str());
        return 1;
    }
    const std::shared_ptr<AudioFile> file = std::move(*opened);
    QtScheduler scheduler;
    LiveOutput output(std::make_unique<CubebOutputDevice>(), std::make_unique<NullOutputDevice>(), scheduler);
    PlaybackGraph graph(output, scheduler);
    bool heard = true;
    graph.onOutputChange([&heard](AudioOutput::State state) { heard &= state == AudioOutput::State::device; });
    auto player = graph.makePlayer();
    graph.connect(*player, graph.timePitch());
    graph.prepare(file->sampleRate());
    graph.timePitch().setRate(rate);
    graph.start();
    const FrameRange whole{ 0, file->length() };
    player->scheduleSegment(file, whole, nullptr);
    PlannedPass again;
    again.segment = whole;
    again.times = PlannedPass::endless;
    player->setPlan({ { again }, std::nullopt });
    player->play();
    const auto end = scheduler.after(seconds, [] { QCoreApplication::quit(); });
    QCoreApplication::exec();

    std::printf("%.0f %% for %.0f s with %zu busy loops: %lld under-runs%s\n", rate * 100, seconds, loops.size(),
                static_cast<long long>(graph.underruns()), heard ? "" : " (the device was lost)");
    for (const pid_t child : loops)
        kill(child, SIGKILL);
    return graph.underruns() == 0 && heard ? 0 : 1;
}
