// From `play` to the first sample that is not zero in the monitor of a PulseAudio null sink, and from a change to the moment at
// which it is heard there. Starts its own server. Prints Markdown tables; every figure is a median.
//
//   quillet-bench-start-latency FOLDER-WITH-SONGS

#include "platform/audio/CubebOutputDevice.h"
#include "platform/audio/LiveOutput.h"
#include "platform/audio/NullOutputDevice.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/media/FfmpegAudioFile.h"
#include "platform/schedule/QtScheduler.h"
#include "tests/support/MemoryAudioFile.h"
#include "tests/support/MonitorRecorder.h"
#include "tests/support/SignalAnalysis.h"
#include "tests/support/TestSoundServer.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <numbers>
#include <set>
#include <vector>

using namespace quillet;

namespace {

constexpr int rounds = 21;

void wait(QtScheduler& scheduler, double seconds)
{
    const auto task = scheduler.after(seconds, [] { QCoreApplication::quit(); });
    QCoreApplication::exec();
}

double median(std::vector<double> values)
{
    std::ranges::nth_element(values, values.begin() + std::ssize(values) / 2);
    return values[values.size() / 2];
}

struct Player {
    TestSoundServer server;
    MonitorRecorder recorder{ server };
    QtScheduler scheduler;
    LiveOutput output{ std::make_unique<CubebOutputDevice>(), std::make_unique<NullOutputDevice>(), scheduler };
    PlaybackGraph graph{ output, scheduler };
    std::unique_ptr<PlayerNode> player = graph.makePlayer();
    std::unique_ptr<MixerNode> mixer = graph.makeMixer();

    Player()
    {
        graph.connect(*player, *mixer);
        graph.connect(*mixer, graph.timePitch());
        graph.start();
        wait(scheduler, 0.5);
    }

    void play(const std::shared_ptr<AudioFile>& file, std::int64_t first)
    {
        const GraphChange change(graph);
        player->stop();
        player->scheduleSegment(file, { first, file->length() - first }, nullptr);
        player->play();
    }

    /// Milliseconds from `play` to sound.
    double start(const std::shared_ptr<AudioFile>& file, std::int64_t first)
    {
        const auto before = MonitorRecorder::Clock::now();
        const std::int64_t from = recorder.frameCount();
        play(file, first);
        const auto sound = recorder.waitForSound(from, std::chrono::seconds(3));
        player->stop();
        wait(scheduler, 0.15 + 0.003 * static_cast<double>(first % 7));
        return sound ? std::chrono::duration<double, std::milli>(recorder.timeOf(*sound) - before).count() : NAN;
    }

    /// Milliseconds from `change` until `heard` says so of 10 ms of the recording.
    template <typename Change, typename Heard> double reaction(Change change, Heard heard)
    {
        wait(scheduler, 0.4);
        const auto before = MonitorRecorder::Clock::now();
        const std::int64_t from = recorder.frameCount();
        change();
        wait(scheduler, 0.4);
        const auto left = channelOf(recorder.stereo(), 0);
        for (std::int64_t at = from; at + 441 < std::ssize(left); at += 44)
            if (heard(std::span(left).subspan(static_cast<std::size_t>(at), 441)))
                return std::chrono::duration<double, std::milli>(recorder.timeOf(at + 441) - before).count() - 5;
        return NAN;
    }
};

void startTable(Player& player, const std::filesystem::path& folder)
{
    std::printf("| format | 100 %% | 50 %% | 300 %% |\n|---|---|---|---|\n");
    std::set<std::filesystem::path> songs(std::filesystem::directory_iterator(folder), {});
    for (const auto& song : songs) {
        auto opened = FfmpegAudioFileOpener().open(song);
        if (!opened)
            continue;
        const std::shared_ptr<AudioFile> file = std::move(*opened);
        player.graph.prepare(file->sampleRate());
        wait(player.scheduler, 0.3);
        std::printf("| %s |", song.filename().c_str());
        for (const double rate : { 1.0, 0.5, 3.0 }) {
            player.graph.timePitch().setRate(rate);
            wait(player.scheduler, 0.2);
            std::vector<double> times;
            for (int round = 0; round < rounds; ++round)
                times.push_back(player.start(file, (round * 7919 + 1) * file->length() / (rounds * 7919 + 2)));
            std::printf(" %.1f |", median(times));
            std::fflush(stdout);
        }
        std::printf("\n");
    }
}

void reactionTable(Player& player)
{
    const auto tone = [](double t) { return 0.2 * std::sin(2 * std::numbers::pi * 1000 * t); };
    const auto file = std::make_shared<MemoryAudioFile>(44100, 44100 * 600, tone);
    player.graph.prepare(44100);
    const auto crossings = [](std::span<const float> samples) {
        int count = 0;
        for (std::size_t i = 1; i < samples.size(); ++i)
            count += samples[i - 1] < 0 && samples[i] >= 0 ? 1 : 0;
        return count;
    };
    auto& equalizer = player.graph.equalizer();
    auto& timePitch = player.graph.timePitch();
    std::printf("\n| change | at 100 %% | at 50 %% |\n|---|---|---|\n");
    std::vector<double> cells[3];
    for (const double rate : { 1.0, 0.5 }) {
        std::vector<double> gain, mute, pitch;
        for (int round = 0; round < 9; ++round) {
            timePitch.setRate(rate);
            player.play(file, 0);
            gain.push_back(player.reaction(
                [&] {
                    equalizer.setGain(2, 12);
                    equalizer.setBypass(false);
                },
                [](std::span<const float> sound) { return rms(sound) > 0.25; }));
            equalizer.setBypass(true);
            mute.push_back(player.reaction([&] { player.mixer->setOutputVolume(0); },
                                           [](std::span<const float> sound) { return rms(sound) < 0.07; }));
            player.mixer->setOutputVolume(1);
            pitch.push_back(player.reaction([&] { timePitch.setPitch(1200); },
                                            [&](std::span<const float> sound) { return crossings(sound) >= 16; }));
            timePitch.setPitch(0);
        }
        cells[0].push_back(median(gain));
        cells[1].push_back(median(mute));
        cells[2].push_back(median(pitch));
    }
    const char* names[] = { "equaliser gain", "mute", "pitch" };
    for (int row = 0; row < 3; ++row)
        std::printf("| %s | %.0f | %.0f |\n", names[row], cells[row][0], cells[row][1]);
}

}  // namespace

int main(int argc, char* argv[])
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FOLDER-WITH-SONGS\n", argv[0]);
        return 2;
    }
    const QCoreApplication application(argc, argv);
    Player player;
    startTable(player, argv[1]);
    reactionTable(player);
    return 0;
}
