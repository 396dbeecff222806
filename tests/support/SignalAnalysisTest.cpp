#include "tests/support/SignalAnalysis.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>
#include <random>

namespace quillet {
namespace {

std::vector<float> tone(double frequencyHz, int sampleRate, std::int64_t frames, double noise = 0)
{
    std::mt19937 random(3);
    std::normal_distribution<double> hiss(0, 1);
    std::vector<float> samples;
    for (std::int64_t i = 0; i < frames; ++i)
        samples.push_back(
            static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * frequencyHz * static_cast<double>(i) / sampleRate + 1)
                               + noise * hiss(random)));
    return samples;
}

TEST(SignalAnalysis, FrequencyIsExactInEveryOctaveAndThroughNoise)
{
    const struct {
        double frequencyHz;
        int sampleRate;
        std::int64_t frames;
        double noise;
        double toleranceCents;
    } cases[] = {
        { 441, 44100, 22050, 0, 0.001 },   { 440.123, 44100, 44100, 0, 0.001 }, { 55, 48000, 96000, 0, 0.01 },
        { 110.5, 8000, 8000, 0, 0.005 },   { 9999.9, 44100, 44100, 0, 0.001 },  { 21000, 96000, 96000, 0, 0.001 },
        { 440, 44100, 22050, 0.035, 0.1 }, { 220, 44100, 441000, 0.1, 0.01 },   { 880, 44100, 4096 + 512, 0, 0.1 },
    };
    for (const auto& each : cases) {
        const double found = toneFrequencyHz(tone(each.frequencyHz, each.sampleRate, each.frames, each.noise), each.sampleRate);
        EXPECT_NEAR(centsBetween(found, each.frequencyHz), 0, each.toleranceCents) << each.frequencyHz << " Hz";
    }
    EXPECT_NEAR(centsBetween(880, 440), 1200, 1e-9);
}

TEST(SignalAnalysis, GapsAreThosePausesThatLieInsideTheSound)
{
    std::vector<float> samples(1000, 0.5F);
    const auto silence = [&](std::size_t first, std::size_t count, float level) {
        std::fill_n(samples.begin() + static_cast<std::ptrdiff_t>(first), count, level);
    };
    silence(0, 100, 0);
    silence(200, 10, 0);
    silence(300, 9, 0);
    silence(400, 20, -0.01F);
    silence(900, 100, 0);
    EXPECT_EQ(firstSound(samples), 100);
    EXPECT_EQ(firstSound(samples, 0, 205), 210);
    EXPECT_EQ(firstSound(samples, 0.6F), std::nullopt);
    EXPECT_THAT(gaps(samples, 10), testing::ElementsAre(Gap{ 200, 10 }));
    EXPECT_THAT(gaps(samples, 10, 0.01F), testing::ElementsAre(Gap{ 200, 10 }, Gap{ 400, 20 }));
}

TEST(SignalAnalysis, APartIsFoundWhereItStandsWhateverItsLevel)
{
    const std::vector<float> whole = tone(300, 44100, 6000, 0.2);
    std::vector<float> part(whole.begin() + 1234, whole.begin() + 2234);
    for (float& sample : part)
        sample *= 0.25F;
    const Alignment found = findIn(whole, part);
    EXPECT_EQ(found.offset, 1234);
    EXPECT_NEAR(found.correlation, 1, 1e-6);
    EXPECT_LT(findIn(tone(1000, 44100, 3000), part).correlation, 0.2);
}

TEST(SignalAnalysis, ChannelsAndLevels)
{
    const std::vector<float> stereo = { 3, 1, -4, 1 };
    EXPECT_THAT(channelOf(stereo, 1), testing::ElementsAre(1, 1));
    EXPECT_NEAR(rms(channelOf(stereo, 0)), std::sqrt(12.5), 1e-6);
    EXPECT_NEAR(rms(tone(441, 44100, 44100)), 0.5 / std::numbers::sqrt2, 1e-6);
}

}  // namespace
}  // namespace quillet
