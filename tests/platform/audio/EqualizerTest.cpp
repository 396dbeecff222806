// The equaliser while its gains move: no splatter, no dependence on the device's blocks, and nothing left over afterwards.

#include "platform/audio/Equalizer.h"
#include "tests/support/SignalAnalysis.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace quillet {
namespace {

constexpr double pi = std::numbers::pi;

std::vector<float> tone(double hertz, int rate, std::int64_t frames)
{
    std::vector<float> stereo;
    for (std::int64_t i = 0; i < frames; ++i)
        stereo.insert(stereo.end(), 2, static_cast<float>(0.2 * std::sin(2 * pi * hertz * static_cast<double>(i) / rate)));
    return stereo;
}

void process(Equalizer& equalizer, std::span<float> stereo, std::int64_t blockFrames)
{
    for (std::size_t at = 0; at < stereo.size(); at += static_cast<std::size_t>(2 * blockFrames))
        equalizer.process(stereo.subspan(at, std::min(static_cast<std::size_t>(2 * blockFrames), stereo.size() - at)));
}

/// 200 ms of a tone whose band goes from one gain to another at its middle.
std::vector<float> moved(double hertz, int rate, double fromDb, double toDb, std::int64_t blockFrames)
{
    auto stereo = tone(hertz, rate, rate / 5);
    const auto halves = std::span(stereo);
    const std::size_t half = stereo.size() / 4 * 2;
    Equalizer equalizer;
    equalizer.setGains({ 0, 0, fromDb, 0, 0 }, rate);
    process(equalizer, halves.first(half), blockFrames);
    equalizer.setGains({ 0, 0, toDb, 0, 0 }, rate);
    process(equalizer, halves.subspan(half), blockFrames);
    return stereo;
}

TEST(Equalizer, MovingGainIsHeardNowhereButInItsTone)
{
    struct Move {
        double hertz, fromDb, toDb;
    };
    for (const int rate : { 8000, 44100 })
        for (const Move& move : { Move{ 1000, 0, 12 }, Move{ 440, 12, 0 }, Move{ 1000, -12, 12 } }) {
            const auto heard = channelOf(moved(move.hertz, rate, move.fromDb, move.toDb, 64), 0);
            const double level = toneSize(heard, move.hertz / rate);
            double away = 0;
            for (int hertz = 20; hertz < 3000; hertz += 20)
                if (std::abs(hertz - move.hertz) >= 100)
                    away = std::max(away, toneSize(heard, static_cast<double>(hertz) / rate));
            EXPECT_LT(20 * std::log10(away / level), -65) << rate << " " << move.hertz;
        }
}

TEST(Equalizer, MoveIsTheSameInAnyBlocksAndDoneWithin40Milliseconds)
{
    constexpr int rate = 44100;
    const auto whole = moved(440, rate, 0, 12, rate);
    for (const std::int64_t blockFrames : { 1, 17, 282 })
        EXPECT_EQ(moved(440, rate, 0, 12, blockFrames), whole) << blockFrames;
    const auto settled = moved(440, rate, 12, 12, rate);
    for (std::size_t i = settled.size() / 2 + 2 * rate * 4 / 100; i < settled.size(); ++i)
        ASSERT_NEAR(whole[i], settled[i], 0.002) << i;
}

TEST(Equalizer, BackAt0DecibelsItPassesEveryBitAndBrokenSamplesAreForgotten)
{
    constexpr int rate = 44100;
    const auto source = tone(440, rate, rate / 10);
    Equalizer equalizer;
    equalizer.setGains({ 3, 6, 12, 1, 5 }, rate);
    auto broken = source;
    broken[100] = std::numeric_limits<float>::infinity();
    broken[3000] = std::numeric_limits<float>::quiet_NaN();
    process(equalizer, broken, 64);
    auto heard = source;
    process(equalizer, heard, 64);
    EXPECT_TRUE(std::ranges::all_of(heard, [](float sample) { return std::isfinite(sample); }));
    EXPECT_GT(rms(heard), 1.2 * rms(source));
    equalizer.setGains({}, rate);
    process(equalizer, heard, 64);
    EXPECT_FALSE(equalizer.isActive());
    heard = source;
    process(equalizer, heard, 64);
    EXPECT_EQ(heard, source);
}

}  // namespace
}  // namespace quillet
