// The whole program through a real sound server: what a listener would hear, recorded from the server's monitor.

#include "AppCore/SettingsStore.h"
#include "app/core/AppState.h"
#include "app/playback/AudioEngine.h"
#include "platform/audio/CubebOutputDevice.h"
#include "platform/audio/LiveOutput.h"
#include "platform/audio/NullOutputDevice.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "platform/schedule/QtScheduler.h"
#include "tests/support/AudioFixtures.h"
#include "tests/support/Command.h"
#include "tests/support/EventLoop.h"
#include "tests/support/MemoryAudioFile.h"
#include "tests/support/MonitorRecorder.h"
#include "tests/support/SignalAnalysis.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <numeric>
#include <optional>
#include <span>
#include <unordered_map>

namespace quillet {
namespace {

using State = AudioOutput::State;

/// Where the thread sanitizer watches, the program is slower than its sound, which then has gaps: what is heard cannot be
/// judged, only that it is played without a race.
bool canBeHeard()
{
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
    std::printf("skipped: what is heard, sample for sample (the thread sanitizer makes the program slower than its sound)\n");
    return false;
#endif
#endif
    return true;
}

/// The engine and its state over the real graph and device.
struct Program {
    EventLoop loop;
    QtScheduler scheduler;
    MemoryDefaultsDomain defaults;
    SettingsStore settings{ defaults };
    StemSessionStore stemSessions{ defaults };
    StemMixStore stemMixes{ defaults };
    PracticeStore practices{ defaults };
    LiveOutput output{ std::make_unique<CubebOutputDevice>(), std::make_unique<NullOutputDevice>(), scheduler };
    PlaybackGraph graph{ output, scheduler };
    AudioEngine engine{ graph, scheduler };
    std::shared_ptr<AppState> state =
        std::make_shared<AppState>(scheduler, SettingsSaver::Stores{ settings, stemSessions, stemMixes, practices }, engine);
    std::vector<State> told;

    explicit Program(const std::shared_ptr<AudioFile>& file)
    {
        engine.setAppState(state);
        graph.onOutputChange([this](State news) { told.push_back(news); });
        graph.start();
        engine.setAudioFile(file);
        const double duration = static_cast<double>(file->length()) / file->sampleRate();
        state->setAudioDuration(duration);
        state->resetToDefaults(duration);
        EXPECT_TRUE(loop.runUntil([this] { return !told.empty(); }, 5));
        run(0.2);
    }

    void run(double seconds)
    {
        EXPECT_FALSE(loop.runUntil([] { return false; }, seconds));
    }
};

std::shared_ptr<AudioFile> tone(double seconds)
{
    return std::make_shared<MemoryAudioFile>(44100, static_cast<std::int64_t>(44100 * seconds),
                                             [](double t) { return 0.5 * std::sin(2 * std::numbers::pi * 441 * t); });
}

/// Left, right, left, ….
std::vector<float> rendered(const std::vector<std::string>& options, const TemporaryFolder& folder, const std::string& song)
{
    const std::string out = (folder / "out.wav").native();
    std::vector<std::string> command{ QUILLET_PROGRAM, "render", song, "-o", out };
    command.insert(command.end(), options.begin(), options.end());
    EXPECT_EQ(runCommand(command).status, 0);
    return decodeWithFfmpeg(out);
}

/// Of a steady tone, by the mean of the middle half of its periods: the holes that a busy machine tears do not count.
double usualFrequencyHz(std::span<const float> samples, int sampleRate)
{
    std::vector<double> periods;
    double last = -1;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        if (samples[i - 1] >= 0 || samples[i] < 0)
            continue;
        const auto before = static_cast<double>(samples[i - 1]);
        const double crossing = static_cast<double>(i) - 1 + before / (before - static_cast<double>(samples[i]));
        if (last >= 0)
            periods.push_back(crossing - last);
        last = crossing;
    }
    std::ranges::sort(periods);
    const auto quarter = static_cast<std::ptrdiff_t>(periods.size() / 4);
    const std::span middle(periods.begin() + quarter, periods.end() - quarter);
    return middle.empty()
        ? 0
        : sampleRate * static_cast<double>(middle.size()) / std::accumulate(middle.begin(), middle.end(), 0.0);
}

/// Which frames of what is to be heard were heard directly after the frame before them, sample for sample, in one of several
/// recordings. A machine that stalls the sound server tears holes into a recording, each time somewhere else; a fault of the
/// program is at its place every time.
class Heard {
public:
    explicit Heard(std::vector<float> expected)
        : m_expected(std::move(expected)),
          m_joined(m_expected.size(), false)
    {
        for (std::size_t i = 0; i + runFrames <= m_expected.size(); ++i)
            if (m_expected[i] != 0)
                m_places.emplace(m_expected[i], i);
    }

    void add(const std::vector<float>& recording)
    {
        std::size_t next = 0;
        for (std::size_t at = 0; at + runFrames <= recording.size();) {
            const auto place = placeOf(std::span(recording).subspan(at, runFrames), next);
            if (!place) {
                ++at;
                continue;
            }
            // What a hole ends or begins with may have been faded: only what lies between two frames of a run is proven.
            for (next = *place + 1, ++at;
                 at < recording.size() && next < m_expected.size() && recording[at] == m_expected[next]; ++at, ++next)
                m_joined[next] = true;
        }
    }

    /// The first frame that was never heard in its place, from the first sound to shortly before the end.
    [[nodiscard]] std::optional<std::int64_t> firstMissing() const
    {
        const auto first = firstSound(m_expected);
        if (!first)
            return 0;
        const auto from = m_joined.begin() + *first + 1;
        const auto missing = std::find(from, m_joined.end() - endFrames, false);
        if (missing == m_joined.end() - endFrames)
            return std::nullopt;
        return missing - m_joined.begin();
    }

private:
    /// So many equal samples in a row are no accident.
    static constexpr std::size_t runFrames = 16;
    /// The limiter's way out.
    static constexpr std::int64_t endFrames = 200;

    [[nodiscard]] std::optional<std::size_t> placeOf(std::span<const float> run, std::size_t from) const
    {
        std::optional<std::size_t> first;
        const auto [begin, end] = m_places.equal_range(run.front());
        for (auto it = begin; it != end; ++it)
            if (it->second >= from && (!first || it->second < *first)
                && std::ranges::equal(run, std::span(m_expected).subspan(it->second, runFrames)))
                first = it->second;
        return first;
    }

    std::vector<float> m_expected;
    std::vector<bool> m_joined;
    std::unordered_multimap<float, std::size_t> m_places;
};

TEST(RealPlayback, WhatComesOutIsWhatRenderWrites)
{
    constexpr int mostAttempts = 30;
    const TemporaryFolder folder;
    const std::string song = (folder / "song.flac").native();
    runFfmpeg({ "-f", "lavfi", "-i", "anoisesrc=duration=2:seed=3:amplitude=0.5:color=pink:sample_rate=44100",  //
                "-f", "lavfi", "-i", "anoisesrc=duration=2:seed=4:amplitude=0.5:color=pink:sample_rate=44100",  //
                "-filter_complex", "amerge=inputs=2", song });
    const TestSoundServer server;
    const std::vector<std::vector<std::string>> cases = {
        {},
        { "--from", "0.5", "--speed", "50" },
        { "--pitch", "300", "--eq", "6,-3,0,4,-6" },
        { "--from", "0.5", "--to", "1.1", "--passes", "3" },
    };
    for (const auto& options : cases) {
        const auto expected = rendered(options, folder, song);
        std::array heard{ Heard(channelOf(expected, 0)), Heard(channelOf(expected, 1)) };
        std::vector<std::string> command{ QUILLET_PROGRAM, "play", song };
        command.insert(command.end(), options.begin(), options.end());
        std::optional<std::int64_t> missing = 0;
        for (int attempt = 0; attempt < mostAttempts && missing; ++attempt) {
            const MonitorRecorder recorder(server);
            const CommandResult played = runCommand(command);
            EXPECT_EQ(played.status, 0) << played.errorOutput;
            const auto recording = recorder.stereo();
            for (std::size_t channel = 0; channel < heard.size(); ++channel)
                heard[channel].add(channelOf(recording, static_cast<int>(channel)));
            missing = heard[0].firstMissing() ? heard[0].firstMissing() : heard[1].firstMissing();
            if (!canBeHeard())
                break;
        }
        if (!canBeHeard())
            continue;
        EXPECT_EQ(missing, std::nullopt) << testing::PrintToString(options);
    }
}

TEST(RealPlayback, AServerThatDiesIsSurvivedAndHeardAgain)
{
    TestSoundServer server;
    Program program(tone(30));
    EXPECT_EQ(program.told, std::vector{ State::device });
    program.state->togglePlayPause();
    program.run(0.5);
    server.kill();
    EXPECT_TRUE(program.loop.runUntil([&] { return program.told.size() == 2; }, 5));
    EXPECT_EQ(program.told.back(), State::substitute);
    const double lost = program.state->playbackPosition();
    program.run(0.5);
    EXPECT_GT(program.state->playbackPosition(), lost + 0.2) << "the play head goes on without a device";
    server.start();
    EXPECT_TRUE(program.loop.runUntil([&] { return program.told.size() == 3; }, 5));
    EXPECT_EQ(program.told.back(), State::device);
    MonitorRecorder recorder(server);
    EXPECT_TRUE(recorder.waitForSound(0, std::chrono::seconds(5)));
}

TEST(RealPlayback, AServerOfAnotherRatePlaysInTune)
{
    const TestSoundServer server(48000);
    MonitorRecorder recorder(server);
    Program program(tone(10));
    const std::int64_t from = recorder.frameCount();
    program.state->togglePlayPause();
    program.run(3);
    const auto heard = channelOf(recorder.stereo(), 0);
    const auto first = firstSound(heard, 0.1F, from);
    ASSERT_TRUE(first);
    if (!canBeHeard())
        return;
    EXPECT_NEAR(centsBetween(usualFrequencyHz(std::span(heard).subspan(static_cast<std::size_t>(*first)), 48000), 441), 0, 2);
}

TEST(RealPlayback, AnInterruptionEndsTheCommandSoon)
{
    const TemporaryFolder folder;
    const std::string song = (folder / "song.wav").native();
    runFfmpeg({ "-f", "lavfi", "-i", "sine=duration=60", song });
    const TestSoundServer server;
    const CommandResult played =
        runCommand({ "timeout", "--preserve-status", "-k", "10", "-s", "INT", "1", QUILLET_PROGRAM, "play", song });
    EXPECT_EQ(played.status, 130);
}

TEST(RealPlayback, WithoutAServerPlaybackTakesItsTimeAndSaysSo)
{
    const TemporaryFolder folder;
    const std::string song = (folder / "song.wav").native();
    runFfmpeg({ "-f", "lavfi", "-i", "sine=duration=0.5", song });
    const CommandResult played =
        runCommand({ "env", "PULSE_SERVER=unix:" + (folder / "none").native(), QUILLET_PROGRAM, "play", song });
    EXPECT_EQ(played.status, 0);
    EXPECT_NE(played.errorOutput.find("no sound device"), std::string::npos) << played.errorOutput;
}

}  // namespace
}  // namespace quillet
