#include "tests/support/MonitorRecorder.h"
#include "tests/support/SignalAnalysis.h"
#include "tests/support/TestSoundServer.h"

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
        pa_simple_new(nullptr, "player", PA_STREAM_PLAYBACK, nullptr, "sound", &format, nullptr, nullptr, nullptr), &pa_simple_free);
    ASSERT_NE(stream, nullptr);
    ASSERT_EQ(pa_simple_write(stream.get(), stereo.data(), stereo.size() * sizeof(float), nullptr), 0);
    ASSERT_EQ(pa_simple_drain(stream.get(), nullptr), 0);
}

TEST(TestSoundServer, RecordsWhatIsPlayedBitForBit)
{
    for (const auto& [sampleRate, rewinds] : { std::pair(44100, NullSinkRewinds::off), std::pair(96000, NullSinkRewinds::on) }) {
        TestSoundServer server({ .sinkRate = sampleRate, .rewinds = rewinds });
        MonitorRecorder recorder(server);
        const std::vector<float> stereo = noise(sampleRate / 2);
        const auto before = Clock::now();
        const std::int64_t from = recorder.frameCount();
        play(stereo, sampleRate);
        const auto first = recorder.waitForSound(from, std::chrono::seconds(10));
        ASSERT_TRUE(first);
        ASSERT_TRUE(recorder.record(sampleRate / 10));
        const std::vector<float> heard = recorder.stereo();
        ASSERT_GE(std::ssize(heard), 2 * *first + std::ssize(stereo));
        EXPECT_TRUE(std::equal(stereo.begin(), stereo.end(), heard.begin() + 2 * *first));
        EXPECT_GT(recorder.timeOf(*first), before);
        printf("latency %f\n", std::chrono::duration<double>(recorder.timeOf(*first) - before).count());
        printf("jitter");
        for (int i = 0; i < 50; ++i) printf(" %.2f", 1000*(std::chrono::duration<double>(recorder.timeOf(sampleRate/200*i+sampleRate/200-1) - before).count()-i*0.005));
        printf("\n");
    }
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
