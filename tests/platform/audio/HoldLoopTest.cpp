// A held instant's loop, repeated without end: even in level, true in pitch, and sensible where a file begins or ends.

#include "platform/audio/HoldLoop.h"
#include "tests/support/SignalAnalysis.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace quillet {
namespace {

using Stereo = std::vector<float>;

/// Left and right of different level and phase.
Stereo tone(double hertz, int sampleRate, std::int64_t frames)
{
    Stereo stereo;
    for (std::int64_t i = 0; i < frames; ++i) {
        const double angle = 2 * std::numbers::pi * hertz * static_cast<double>(i) / sampleRate;
        stereo.push_back(static_cast<float>(0.4 * std::sin(angle)));
        stereo.push_back(static_cast<float>(0.2 * std::sin(angle + 2)));
    }
    return stereo;
}

Stereo loopOf(const Stereo& stereo, std::int64_t start, int sampleRate, std::int64_t length)
{
    Stereo loop(static_cast<std::size_t>(2 * length));
    makeHoldLoop(stereo, start, sampleRate, loop);
    return loop;
}

std::vector<float> repeated(const Stereo& loop, int channel, int sampleRate)
{
    const auto once = channelOf(loop, channel);
    std::vector<float> samples;
    while (std::ssize(samples) < sampleRate)
        samples.insert(samples.end(), once.begin(), once.end());
    return samples;
}

/// The loudest window of 24 ms beside the softest.
double swingDb(std::span<const float> samples, int sampleRate)
{
    const auto window = static_cast<std::size_t>(sampleRate * 24 / 1000);
    double least = 1e9;
    double most = 0;
    for (std::size_t at = 0; at + window <= samples.size(); at += window / 8) {
        const double size = rms(samples.subspan(at, window));
        least = std::min(least, size);
        most = std::max(most, size);
    }
    return 20 * std::log10(most / least);
}

TEST(HoldLoop, ToneSoundsOnEvenlyAndInTuneAtAnyRate)
{
    for (const int rate : { 8000, 44100, 192000 })
        for (const double hertz : { 82.4, 443.0, 3210.9 }) {
            const std::int64_t lead = holdLeadFrames(rate);
            const auto around = tone(hertz, rate, holdSpanFrames(rate));
            const std::int64_t length = holdLoopLength(around, lead, rate);
            EXPECT_GE(length, rate * 6 / 100) << rate;
            EXPECT_LE(length, rate / 10) << rate;
            const auto loop = loopOf(around, lead, rate, length);
            EXPECT_TRUE(std::equal(loop.begin(), loop.begin() + std::ssize(loop) / 2, around.begin() + 2 * lead));
            for (const int channel : { 0, 1 }) {
                const auto heard = repeated(loop, channel, rate);
                EXPECT_LT(swingDb(heard, rate), 0.5) << rate << " " << hertz;
                EXPECT_LT(maxStep(heard), 1.1F * maxStep(channelOf(around, channel))) << rate << " " << hertz;
            }
            // Repeated, a tone has whole cycles in each pass.
            const double cycles = hertz * static_cast<double>(length) / rate;
            EXPECT_NEAR(centsBetween(std::round(cycles), cycles), 0, 1) << rate << " " << hertz;
        }
}

TEST(HoldLoop, OneLengthSuitsTheSumOfSeveralFilesAndBothChannels)
{
    constexpr int rate = 44100;
    const std::int64_t lead = holdLeadFrames(rate);
    // 100 and 140 Hz fit together only every 50 ms; each is heard in one channel alone, so that a search in one channel or in
    // one file would take another length.
    Stereo low = tone(100, rate, holdSpanFrames(rate));
    Stereo high = tone(140, rate, holdSpanFrames(rate));
    Stereo sum;
    for (std::size_t i = 0; i < low.size(); ++i) {
        (i % 2 == 0 ? high : low)[i] = 0;
        sum.push_back(low[i] + high[i]);
    }
    const std::int64_t length = holdLoopLength(sum, lead, rate);
    EXPECT_NEAR(static_cast<double>(length), 0.1 * rate, 2);
    EXPECT_LT(swingDb(repeated(loopOf(low, lead, rate, length), 0, rate), rate), 1);
    EXPECT_LT(swingDb(repeated(loopOf(high, lead, rate, length), 1, rate), rate), 1);
}

TEST(HoldLoop, FilesBeginningAndEndHoldWhatThereIs)
{
    constexpr int rate = 44100;
    const auto file = tone(443, rate, rate);
    const float step = 1.1F * maxStep(channelOf(file, 0));
    // No frames ahead of the window.
    const auto begin = loopOf(file, 0, rate, holdLoopLength(file, 0, rate));
    EXPECT_LT(maxStep(repeated(begin, 0, rate)), step);
    EXPECT_LT(swingDb(repeated(begin, 0, rate), rate), 0.5);
    // Too few after it: a shorter loop, and no silence in it.
    for (const int milliseconds : { 90, 70, 40, 25 }) {
        const std::int64_t rest = rate * milliseconds / 1000;
        const std::int64_t length = holdLoopLength(file, rate - rest, rate);
        EXPECT_LE(length, rest);
        const auto heard = repeated(loopOf(file, rate - rest, rate, length), 0, rate);
        EXPECT_LT(maxStep(heard), step) << milliseconds;
        EXPECT_LT(swingDb(heard, rate), 0.7) << milliseconds;
    }
    // Hardly anything, and nothing at all: silence, yet a loop.
    for (const std::int64_t rest : { 1, 0 }) {
        const auto loop = loopOf(file, rate - rest, rate, holdLoopLength(file, rate - rest, rate));
        EXPECT_GT(std::ssize(loop), 2 * rate / 100);
        EXPECT_EQ(firstSound(std::span(loop).subspan(2 * rest, loop.size() / 2)), std::nullopt);
    }
    const Stereo silence(static_cast<std::size_t>(2 * holdSpanFrames(rate)));
    EXPECT_EQ(holdLoopLength(silence, holdLeadFrames(rate), rate), rate * 8 / 100);
    EXPECT_EQ(holdLoopLength({}, 0, rate), std::ssize(loopOf({}, 0, rate, holdLoopLength({}, 0, rate))) / 2);
}

}  // namespace
}  // namespace quillet
