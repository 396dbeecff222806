// What a musician does while a song plays, judged by the recording of a real sound server: how far a mark lies from the instant
// that was heard, the holes where loops are called up, trained and played as a list, and by how many frames their passes are
// too long or too short. Prints Markdown tables.
//
//   quillet-bench-practice

#include "app/core/AppState.h"
#include "platform/audio/CubebOutputDevice.h"
#include "platform/audio/LiveOutput.h"
#include "platform/audio/NullOutputDevice.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "platform/schedule/QtScheduler.h"
#include "tests/support/ChirpTracker.h"
#include "tests/support/MonitorRecorder.h"
#include "tests/support/SignalAnalysis.h"
#include "tests/support/TestSoundServer.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace quillet;

namespace {

constexpr int sampleRate = 44100;
constexpr double songSeconds = 20;
constexpr int rounds = 7;

/// What streams ask for that are opened while it exists.
struct Latency {
    explicit Latency(const char* milliseconds) { setenv("PULSE_LATENCY_MSEC", milliseconds, 1); }
    ~Latency() { unsetenv("PULSE_LATENCY_MSEC"); }
    Latency(const Latency&) = delete;
    Latency& operator=(const Latency&) = delete;
};

/// The program without its window, with a chirp for a song.
struct Player {
    TestSoundServer server;
    // The recording's own is as short as ever: it tells when a frame was heard.
    MonitorRecorder recorder{ server };
    Latency latency;
    QtScheduler scheduler;
    LiveOutput output{ std::make_unique<CubebOutputDevice>(), std::make_unique<NullOutputDevice>(), scheduler };
    PlaybackGraph graph{ output, scheduler };
    MemoryDefaultsDomain defaults;
    SettingsStore settings{ defaults };
    StemSessionStore stemSessions{ defaults };
    StemMixStore stemMixes{ defaults };
    PracticeStore practices{ defaults };
    AudioEngine engine{ graph, scheduler };
    std::shared_ptr<AppState> state =
        std::make_shared<AppState>(scheduler, SettingsSaver::Stores{ settings, stemSessions, stemMixes, practices }, engine);
    std::shared_ptr<AudioFile> song = ChirpTracker::file(sampleRate, songSeconds);

    explicit Player(const char* latencyMilliseconds)
        : latency(latencyMilliseconds)
    {
        engine.setAppState(state);
        state->beginOpening("/chirp");
        state->finishOpening({ .audio = song, .peaks = { 1 } });
    }

    void wait(double seconds)
    {
        const auto task = scheduler.after(seconds, [] { QCoreApplication::quit(); });
        QCoreApplication::exec();
    }
};

double medianOf(std::vector<double> values)
{
    std::ranges::sort(values);
    return values.empty() ? NAN : values[values.size() / 2];
}

// ---- Marks ----

struct MarkErrors {
    double median, nine;
};

/// Milliseconds of song between the place that a mark takes and the one that is heard then: half of the marks, and nine of ten.
MarkErrors markErrors(const char* latency, double speed)
{
    Player player(latency);
    player.state->setSpeed(speed);
    player.state->togglePlayPause();
    player.wait(1);
    struct Mark {
        MonitorRecorder::Clock::time_point when;
        double place;
    };
    std::vector<Mark> marks;
    std::minstd_rand random(7);
    for (int i = 0; i < 40; ++i) {
        player.wait(0.1 + 0.2 * std::uniform_real_distribution()(random));
        marks.push_back({ MonitorRecorder::Clock::now(), player.state->heardPosition() });
    }
    player.wait(0.6);
    const auto left = channelOf(player.recorder.stereo(), 0);
    std::vector<double> errors;
    constexpr std::int64_t half = sampleRate / 100;
    for (const Mark& mark : marks) {
        std::int64_t low = 0;
        std::int64_t high = std::ssize(left) - 1;
        while (low < high) {
            const std::int64_t middle = (low + high) / 2;
            if (player.recorder.timeOf(middle) < mark.when)
                low = middle + 1;
            else
                high = middle;
        }
        if (low < half || low + half > std::ssize(left))
            continue;
        if (const auto heard = ChirpTracker::secondsAt(part(left, low - half, 2 * half), sampleRate, 0))
            errors.push_back(1000 * std::abs(mark.place - *heard));
    }
    std::ranges::sort(errors);
    return { errors.at(errors.size() / 2), errors.at(errors.size() * 9 / 10) };
}

void markTable()
{
    std::printf("| marks beside what is heard | half of them within | nine of ten |\n|---|---|---|\n");
    for (const char* latency : { "25", "200" })
        for (const double speed : { 100.0, 50.0 }) {
            const MarkErrors errors = markErrors(latency, speed);
            std::printf("| %s ms of latency, %.0f %% | %.1f ms | %.1f ms |\n", latency, speed, errors.median, errors.nine);
            std::fflush(stdout);
        }
}

// ---- Joints ----

/// In which frame of the recording each of these places of the song is heard, untouched, one after the other.
std::vector<std::int64_t> framesOf(const std::vector<float>& left, AudioFile& song, const std::vector<double>& places)
{
    constexpr std::int64_t count = 300;
    std::vector<std::int64_t> frames;
    std::int64_t from = 0;
    for (const double place : places) {
        std::vector<float> stereo(2 * count);
        song.read(static_cast<std::int64_t>(place * sampleRate), stereo);
        const auto wanted = channelOf(stereo, 0);
        const auto found = std::search(left.begin() + from, left.end(), wanted.begin(), wanted.end());
        if (found == left.end())
            return {};
        frames.push_back(found - left.begin());
        from = frames.back() + count;
    }
    return frames;
}

struct Passage {
    const char* name;
    std::function<void(Player& player)> play;
    double seconds;
    /// Two places that sound untouched, and how many frames lie between them.
    std::vector<double> places;
    double framesBetween;
};

void jointTable()
{
    const auto frames = [](double seconds) { return seconds * sampleRate; };
    const Passage passages[] = {
        { "loop called up at the joint, 100 %",
          [](Player& player) {
              player.state->setLoops({ { .name = "a", .region = { 2, 3 } }, { .name = "b", .region = { 6, 7.5 } } });
              player.state->callLoop(0, AppState::CallUp::atOnce);
              player.state->togglePlayPause();
              player.wait(0.7);
              player.state->callLoop(1, AppState::CallUp::atJoint);
          },
          2.5,
          { 2.5, 6.5, 6.5 },
          frames(1 + 1.5) },
        { "list: 100, 60, 100 %",
          [](Player& player) {
              player.state->setLoops({ { .name = "a", .region = { 2, 3 }, .times = 1 },
                                       { .name = "b", .region = { 6, 7.2 }, .speed = 60, .times = 1 },
                                       { .name = "c", .region = { 9, 10 }, .times = 1 } });
              player.state->playLoopList();
          },
          5,
          { 2.5, 9.5 },
          frames(1 + 1.2 / 0.6) },
        { "trainer: 50, 75, 100, 50, 75, 100 %",
          [](Player& player) {
              player.state->setRegion({ 2, 3 });
              player.state->setTrainer({ .fromSpeed = 50,
                                         .goalSpeed = 100,
                                         .stepSize = 25,
                                         .passesPerStep = 1,
                                         .atGoal = Trainer::AtGoal::startOver });
              player.state->startTrainer();
              player.state->togglePlayPause();
          },
          9.5,
          { 2.5, 2.5 },
          frames(1 + 1 / 0.5 + 1 / 0.75) },
    };
    std::printf("\n| joints in the recording | longest hole | frames too many |\n|---|---|---|\n");
    for (const Passage& passage : passages) {
        std::vector<double> holes;
        std::vector<double> errors;
        for (int round = 0; round < rounds; ++round) {
            Player player("25");
            passage.play(player);
            player.wait(passage.seconds);
            const auto left = channelOf(player.recorder.stereo(), 0);
            const auto begin = firstSound(left, 0.1F);
            std::int64_t longest = 0;
            if (begin)
                for (const Gap& gap : gaps(part(left, *begin, std::ssize(left) - *begin), 2, 0.01F))
                    longest = std::max(longest, gap.frameCount);
            holes.push_back(1000.0 * static_cast<double>(longest) / sampleRate);
            const auto found = framesOf(left, *player.song, passage.places);
            if (!found.empty())
                errors.push_back(static_cast<double>(found.back() - found.front()) - passage.framesBetween);
        }
        std::printf("| %s | %.2f ms | %.0f (%zu of %d found) |\n", passage.name, medianOf(holes), medianOf(errors),
                    errors.size(), rounds);
        std::fflush(stdout);
    }
}

}  // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    markTable();
    jointTable();
    return 0;
}
