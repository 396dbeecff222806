#include "tests/support/TestSoundServer.h"
#include "tests/support/MonitorRecorder.h"
#include "tests/support/SignalAnalysis.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include <pulse/simple.h>

namespace quillet {
namespace {

using Clock = MonitorRecorder::Clock;

std::vector<float> noise(std::int64_t frames)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<float> value(-1, 1);
    std::vector<float> stereo(static_cast<std::size_t>(2 * frames));
    std::ranges::generate(stereo, [&] { return value(random); });
    return stereo;
}

/// Plays through libpulse to whatever server the environment names; returns when the server has taken everything.
void play(const std::vector<float>& stereo, int sampleRate)
{
    const pa_sample_spec format{ PA_SAMPLE_FLOAT32LE, static_cast<std::uint32_t>(sampleRate), 2 };
    const std::unique_ptr<pa_simple, decltype(&pa_simple_free)> stream(
        pa_simple_new(nullptr, "player", PA_STREAM_PLAYBACK, nullptr, "sound", &format, nullptr, nullptr, nullptr),
        &pa_simple_free);
    ASSERT_NE(stream, nullptr);
    ASSERT_EQ(pa_simple_write(stream.get(), stereo.data(), stereo.size() * sizeof(float), nullptr), 0);
    ASSERT_EQ(pa_simple_drain(stream.get(), nullptr), 0);
}

TEST(TestSoundServer, RecordsWhatIsPlayedBitForBit)
{
    for (const int sampleRate : { 44100, 96000 }) {
        TestSoundServer server({ .sinkRate = sampleRate });
        MonitorRecorder recorder(server);
        const std::vector<float> stereo = noise(sampleRate / 2);
        const auto before = Clock::now();
        play(stereo, sampleRate);
        const auto after = Clock::now();
        const auto first = recorder.waitForSound(0, std::chrono::seconds(10));
        ASSERT_TRUE(first);
        ASSERT_TRUE(recorder.record(sampleRate / 10));
        const std::vector<float> heard = recorder.stereo();
        ASSERT_GE(std::ssize(heard), 2 * *first + std::ssize(stereo));
        EXPECT_TRUE(std::equal(stereo.begin(), stereo.end(), heard.begin() + 2 * *first));
        EXPECT_GT(recorder.timeOf(*first), before);
        EXPECT_LT(recorder.timeOf(*first), after);
        EXPECT_LE(recorder.frameAt(before), *first);
        EXPECT_GT(recorder.frameAt(after), *first);
    }
}

TEST(TestSoundServer, PlaysWithRewindsToo)
{
    TestSoundServer server({ .rewinds = NullSinkRewinds::on });
    MonitorRecorder recorder(server);
    const std::vector<float> stereo = noise(44100);
    play(stereo, 44100);
    const std::vector<float> heard = channelOf(recorder.stereo(), 0);
    const std::vector<float> part = channelOf(std::span(stereo).subspan(44100, 2000), 0);
    EXPECT_GT(findIn(heard, part).correlation, 0.9999);
}

TEST(TestSoundServer, CanDieAndComeBackInMidTest)
{
    TestSoundServer server;
    {
        MonitorRecorder recorder(server);
        ASSERT_TRUE(recorder.record(4410));
        server.kill();
        EXPECT_FALSE(recorder.record(44100));
        EXPECT_TRUE(recorder.hasEnded());
    }
    server.restart();
    MonitorRecorder recorder(server);
    play(noise(4410), 44100);
    EXPECT_TRUE(recorder.waitForSound(0, std::chrono::seconds(10)));
}

TEST(TestSoundServer, PutsTheEnvironmentBack)
{
    setenv("PULSE_SERVER", "elsewhere", 1);
    unsetenv("PULSE_COOKIE");
    {
        const TestSoundServer server;
        EXPECT_EQ(std::getenv("PULSE_SERVER"), server.address());
    }
    EXPECT_STREQ(std::getenv("PULSE_SERVER"), "elsewhere");
    EXPECT_EQ(std::getenv("PULSE_COOKIE"), nullptr);
}

}  // namespace
}  // namespace quillet
