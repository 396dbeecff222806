// What is heard when something changes while it plays, and what that costs: how much of a mark before a region's end sounds
// after a change of speed, the holes that edits leave in the recording of a real sound server, the length of a loop's pause,
// and CPU time at high sample rates and under a moving gain. Prints Markdown tables.
//
//   quillet-bench-changes

#include "platform/audio/CubebOutputDevice.h"
#include "platform/audio/LiveOutput.h"
#include "platform/audio/NullOutputDevice.h"
#include "platform/audio/OfflineOutput.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/schedule/QtScheduler.h"
#include "platform/schedule/VirtualScheduler.h"
#include "tests/support/MemoryAudioFile.h"
#include "tests/support/MonitorRecorder.h"
#include "tests/support/SignalAnalysis.h"
#include "tests/support/TestSoundServer.h"

#include <QCoreApplication>

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <numbers>
#include <utility>
#include <vector>

using namespace quillet;

namespace {

constexpr double pi = std::numbers::pi;

PassPlan endlessly(FrameRange segment, double pauseSeconds = 0, bool held = false)
{
    PlannedPass pass;
    pass.segment = segment;
    pass.pauseSeconds = pauseSeconds;
    pass.held = held;
    pass.times = PlannedPass::endless;
    return { { pass }, std::nullopt };
}

/// Two tones an octave and a half apart, the second one from `changeSeconds` on.
std::shared_ptr<MemoryAudioFile> song(int rate, double seconds, double changeSeconds)
{
    return std::make_shared<MemoryAudioFile>(rate, static_cast<std::int64_t>(seconds * rate), [=](double t) {
        return 0.5 * std::sin(2 * pi * (t < changeSeconds ? 1000 : 3000) * t);
    });
}

struct Offline {
    VirtualScheduler scheduler;
    OfflineOutput output;
    PlaybackGraph graph{ output, scheduler };
    std::unique_ptr<PlayerNode> player = graph.makePlayer();
    std::unique_ptr<MixerNode> mixer = graph.makeMixer();
    int rate;

    explicit Offline(int sampleRate = 44100)
        : rate(sampleRate)
    {
        graph.connect(*player, *mixer);
        graph.connect(*mixer, graph.timePitch());
        graph.start();
    }

    void play(const std::shared_ptr<AudioFile>& file, FrameRange segment, const PassPlan& plan = {})
    {
        const GraphChange change(graph);
        player->stop();
        player->scheduleSegment(file, segment, nullptr);
        player->setPlan(plan);
        player->play();
    }

    std::vector<float> pull(double seconds, const std::function<void()>& everyBlock = [] { })
    {
        std::vector<float> left;
        std::vector<float> block(128);
        for (auto blocks = static_cast<std::int64_t>(std::ceil(seconds * rate / 64)); blocks > 0; --blocks) {
            output.pull(block);
            for (std::size_t i = 0; i < block.size(); i += 2)
                left.push_back(block[i]);
            scheduler.advance(64.0 / rate);
            everyBlock();
        }
        return left;
    }
};

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Milliseconds of 3 kHz, in steps of 1.
double markMilliseconds(const std::vector<float>& left)
{
    int milliseconds = 0;
    for (std::size_t at = 0; at + 44 <= left.size(); at += 44) {
        int crossings = 0;
        double energy = 0;
        for (std::size_t i = at + 1; i < at + 44; ++i) {
            crossings += left[i - 1] < 0 && left[i] >= 0 ? 1 : 0;
            energy += static_cast<double>(left[i] * left[i]);
        }
        milliseconds += crossings >= 2 && energy > 0.5 ? 1 : 0;
    }
    return milliseconds;
}

void markTable()
{
    std::printf("| speed | mark heard | its length |\n|---|---|---|\n");
    for (const auto& [before, after] : { std::pair{ 0.5, 3.0 }, { 0.5, 1.5 }, { 0.9, 0.6 }, { 3.0, 0.9 } }) {
        Offline rig;
        rig.graph.timePitch().setRate(before);
        rig.play(song(44100, 4, 1.85), { 0, 44100 * 2 });
        rig.pull(0.8 / before);
        rig.graph.timePitch().setRate(after);
        std::printf("| %.0f → %.0f %% | %.0f ms | %.0f ms |\n", 100 * before, 100 * after,
                    markMilliseconds(rig.pull(3 / after)), 150 / after);
    }
}

void pauseTable()
{
    std::printf("\n| loop pause of 250 ms | shortest | longest |\n|---|---|---|\n");
    for (const double rate : { 0.5, 1.0, 3.0 }) {
        Offline rig;
        rig.graph.timePitch().setRate(rate);
        rig.play(song(44100, 4, 9), { 4410, 4410 }, endlessly({ 4410, 4410 }, 0.25));
        auto pauses = gaps(rig.pull(6), 4410);
        std::ranges::sort(pauses, {}, &Gap::frameCount);
        std::printf("| at %.0f %% | %.2f ms | %.2f ms |\n", 100 * rate, static_cast<double>(pauses.front().frameCount) / 44.1,
                    static_cast<double>(pauses.back().frameCount) / 44.1);
    }
}

void costTable()
{
    std::printf("\n| CPU seconds per second of sound | |\n|---|---|\n");
    for (const int rate : { 48000, 96000, 192000 })
        for (const double speed : { 0.5, 3.0 }) {
            Offline rig(rate);
            rig.graph.timePitch().setRate(speed);
            rig.play(song(rate, 30, 15), { 0, 30 * rate });
            rig.pull(0.5);
            const double before = cpuSeconds();
            rig.pull(8);
            std::printf("| %d Hz at %.0f %% | %.3f |\n", rate, 100 * speed, (cpuSeconds() - before) / 8);
            std::fflush(stdout);
        }
    for (const bool moves : { false, true }) {
        Offline rig;
        rig.graph.timePitch().setRate(0.5);
        rig.play(song(44100, 30, 15), { 0, 30 * 44100 });
        rig.pull(0.5);
        const double before = cpuSeconds();
        int step = 0;
        rig.pull(8, [&] {
            // A step every 17 ms.
            if (moves && ++step % 12 == 0)
                rig.mixer->setOutputVolume(0.5 + 0.5 * std::sin(step * 0.005));
        });
        std::printf("| at 50 %%, a gain %s | %.3f |\n", moves ? "moving" : "at rest", (cpuSeconds() - before) / 8);
        std::fflush(stdout);
    }
}

void wait(QtScheduler& scheduler, double seconds)
{
    const auto task = scheduler.after(seconds, [] { QCoreApplication::quit(); });
    QCoreApplication::exec();
}

using Edit = std::function<void(PlayerNode&, const std::shared_ptr<AudioFile>&, int)>;

/// The median over twenty edits of the longest stretch without a sound in the 0.3 s after each, in milliseconds. A sound server
/// that gets no turn for a while tears holes now and then, edits or not; a hole of ours is there every time.
double holeMilliseconds(double rate, const Edit& edit)
{
    const TestSoundServer server;
    const MonitorRecorder recorder(server);
    QtScheduler scheduler;
    LiveOutput output(std::make_unique<CubebOutputDevice>(), std::make_unique<NullOutputDevice>(), scheduler);
    PlaybackGraph graph(output, scheduler);
    const auto player = graph.makePlayer();
    graph.connect(*player, graph.timePitch());
    graph.timePitch().setRate(rate);
    graph.start();
    const auto file = song(44100, 60, 30);
    std::vector<std::int64_t> edits;
    for (int i = 0; i < 21; ++i) {
        edits.push_back(recorder.frameCount());
        {
            const GraphChange change(graph);
            edit(*player, file, i);
        }
        wait(scheduler, i == 0 ? 1.2 : 0.35);
    }
    const auto left = channelOf(recorder.stereo(), 0);
    std::vector<double> holes;
    for (std::size_t i = 1; i < edits.size(); ++i) {
        std::int64_t longest = 0;
        std::int64_t present = 0;
        for (std::int64_t at = edits[i]; at < std::min<std::int64_t>(edits[i] + 13230, std::ssize(left)); ++at) {
            present = std::abs(left[static_cast<std::size_t>(at)]) < 0.01F ? present + 1 : 0;
            longest = std::max(longest, present);
        }
        holes.push_back(static_cast<double>(longest) / 44.1);
    }
    std::ranges::sort(holes);
    return holes[holes.size() / 2];
}

void play(PlayerNode& player, const std::shared_ptr<AudioFile>& file, std::int64_t start, bool held)
{
    const FrameRange segment{ start, held ? 3528 : 44100 * 20 };
    player.stop();
    if (held)
        player.holdSegment(file, segment, nullptr);
    else
        player.scheduleSegment(file, segment, nullptr);
    player.setPlan(endlessly(segment, 0, held));
    player.play();
}

void holeTable()
{
    std::printf("\n| hole after | at 25 ms of latency | at 200 ms |\n|---|---|---|\n");
    struct Case {
        const char* name;
        double rate;
        Edit edit;
    };
    const Case cases[] = {
        { "region moved, 100 %", 1,
          [](PlayerNode& player, const auto& file, int i) { play(player, file, i % 2 == 0 ? 44100 : 44100 * 31, false); } },
        { "region moved, 50 %", 0.5,
          [](PlayerNode& player, const auto& file, int i) { play(player, file, i % 2 == 0 ? 44100 : 44100 * 31, false); } },
        { "hold stepped, 50 %", 0.5,
          [](PlayerNode& player, const auto& file, int i) { play(player, file, 44100 + 3528 * i, true); } },
        { "started again, 100 %", 1, [](PlayerNode& player, const auto& file, int) { play(player, file, 44100, false); } },
    };
    for (const Case& c : cases) {
        std::printf("| %s |", c.name);
        for (const char* latency : { "25", "200" }) {
            setenv("PULSE_LATENCY_MSEC", latency, 1);
            std::printf(" %.2f ms |", holeMilliseconds(c.rate, c.edit));
            std::fflush(stdout);
        }
        std::printf("\n");
    }
}

}  // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    markTable();
    pauseTable();
    holeTable();
    costTable();
    return 0;
}
