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
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numbers>

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
    LiveOutput output{ std::make_unique<CubebOutputDevice>(), std::make_unique<NullOutputDevice>(), scheduler };
    PlaybackGraph graph{ output, scheduler };
    AudioEngine engine{ graph, scheduler };
    std::shared_ptr<AppState> state = std::make_shared<AppState>(scheduler, settings, engine);
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

std::vector<float> rendered(const std::vector<std::string>& options, const TemporaryFolder& folder, const std::string& song)
{
    const std::string out = (folder / "out.wav").native();
    std::vector<std::string> command{ QUILLET_PROGRAM, "render", song, "-o", out };
    command.insert(command.end(), options.begin(), options.end());
    EXPECT_EQ(runCommand(command).status, 0);
    return channelOf(decodeWithFfmpeg(out), 0);
}

/// What differs between a recording and what was to be heard; empty when it is the same sample for sample.
std::string difference(const std::vector<float>& heard, const std::vector<float>& expected)
{
    const auto first = firstSound(heard);
    const auto expectedFirst = firstSound(expected);
    if (!first || !expectedFirst)
        return "silence";
    const std::int64_t count = std::ssize(expected) - *expectedFirst - 200;
    if (std::ssize(heard) <= *first + count)
        return "the end is missing";
    for (std::int64_t i = 0; i < count; ++i)
        if (heard[static_cast<std::size_t>(*first + i)] != expected[static_cast<std::size_t>(*expectedFirst + i)])
            return "frame " + std::to_string(i) + " differs";
    return {};
}

TEST(RealPlayback, WhatComesOutIsWhatRenderWrites)
{
    const TemporaryFolder folder;
    const std::string song = (folder / "song.flac").native();
    runFfmpeg({ "-f", "lavfi", "-i", "anoisesrc=duration=2:seed=3:amplitude=0.5:color=pink:sample_rate=44100", song });
    const TestSoundServer server;
    const std::vector<std::vector<std::string>> cases = {
        {},
        { "--from", "0.5", "--speed", "50" },
        { "--pitch", "300", "--eq", "6,-3,0,4,-6" },
    };
    for (const auto& options : cases) {
        const auto expected = rendered(options, folder, song);
        std::vector<std::string> command{ QUILLET_PROGRAM, "play", song };
        command.insert(command.end(), options.begin(), options.end());
        // A machine that stalls the sound server tears a hole into a recording now and then; a fault of the program is there
        // every time.
        std::string problem = "not played";
        for (int attempt = 0; attempt < 3 && !problem.empty(); ++attempt) {
            const MonitorRecorder recorder(server);
            const CommandResult played = runCommand(command);
            EXPECT_EQ(played.status, 0) << played.errorOutput;
            problem = canBeHeard() ? difference(channelOf(recorder.stereo(), 0), expected) : "";
        }
        EXPECT_EQ(problem, "") << testing::PrintToString(options);
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
    const auto middle = std::span(heard).subspan(static_cast<std::size_t>(*first + 9600), 24000);
    EXPECT_NEAR(centsBetween(toneFrequencyHz(middle, 48000), 441), 0, 2);
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
