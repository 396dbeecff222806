// The limiter: never beyond full scale, transparent below it, and heard as little as can be while it works.

#include "platform/audio/Limiter.h"
#include "tests/support/SignalAnalysis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace quillet {
namespace {

std::vector<float> limited(std::vector<float> stereo, bool engaged = true)
{
    Limiter limiter;
    limiter.process(stereo, engaged);
    return stereo;
}

/// The first frame from which on `heard` is `source` bit for bit, delayed.
std::int64_t transparentFrom(const std::vector<float>& heard, const std::vector<float>& source)
{
    constexpr std::size_t delay = 2 * Limiter::delayFrames;
    std::size_t from = heard.size();
    while (from > delay && heard[from - 1] == source[from - 1 - delay])
        --from;
    return static_cast<std::int64_t>((from + 1) / 2);
}

TEST(Limiter, OnlyDelaysWhatNeedsNoLimiting)
{
    const auto quiet = whiteNoise(2 * 44100, 1.0F);
    EXPECT_EQ(transparentFrom(limited(quiet), quiet), Limiter::delayFrames);
    const auto loud = whiteNoise(2 * 44100, 3.0F);
    EXPECT_EQ(transparentFrom(limited(loud, false), loud), Limiter::delayFrames);
}

TEST(Limiter, NothingPassesFullScaleAndOnePeakIsOverWithinASecond)
{
    std::mt19937 random(5);
    for (int round = 0; round < 20; ++round) {
        auto source = whiteNoise(2 * 3 * 44100, 0.9F);
        std::int64_t lastPeak = 0;
        for (int peaks = 0; peaks < 60; ++peaks) {
            const auto frame = static_cast<std::int64_t>(random() % 44100);
            source[static_cast<std::size_t>(2 * frame + static_cast<std::int64_t>(random() % 2))] *=
                static_cast<float>(1U << (random() % 6));
            lastPeak = std::max(lastPeak, frame);
        }
        const auto heard = limited(source);
        for (const float sample : heard)
            ASSERT_LE(std::abs(sample), 1.0F);
        EXPECT_LT(transparentFrom(heard, source), lastPeak + 48000);
    }
}

TEST(Limiter, BassKeepsItsShape)
{
    for (const int rate : { 44100, 192000 })
        for (const double hertz : { 60.0, 61.7 }) {
            std::vector<float> stereo;
            for (int i = 0; i < 2 * rate; ++i)
                stereo.insert(stereo.end(), 2, static_cast<float>(2 * std::sin(2 * std::numbers::pi * hertz * i / rate)));
            const auto heard = channelOf(limited(stereo), 0);
            const auto size = [&](double tried) { return toneSize(part(heard, rate, rate), tried / rate); };
            EXPECT_NEAR(size(hertz), 1, 0.01);
            for (const double away : { 2.0, 1.5, 3.0, 5.0 })
                EXPECT_LT(20 * std::log10(size(away * hertz)), -65) << rate << " " << hertz << " × " << away;
        }
}

TEST(Limiter, GainMovesWithoutACorner)
{
    // A peak on a steady level shows the gain as it goes down and up again.
    std::vector<float> source(2 * 2 * 44100, 0.5F);
    source[20000] = 4;
    auto gain = channelOf(limited(source), 0);
    gain.erase(gain.begin(), gain.begin() + Limiter::delayFrames);
    gain[10000] = gain[9999];
    for (std::size_t i = 1; i + 1 < gain.size(); ++i)
        ASSERT_LT(std::abs(gain[i - 1] - 2 * gain[i] + gain[i + 1]), 0.002F) << i;
    EXPECT_NEAR(gain[10001], 0.5 / 4, 0.001);
}

}  // namespace
}  // namespace quillet
