// What comes out of the graph, judged by physical properties: identity, length, pitch, level, silence, and no step at a join.

#include "tests/platform/audio/GraphRig.h"
#include "tests/support/MemoryAudioFile.h"
#include "tests/support/SignalAnalysis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace quillet {
namespace {

constexpr double pi = std::numbers::pi;

std::shared_ptr<MemoryAudioFile> noise(int sampleRate, std::int64_t frames)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> value(-0.9F, 0.9F);
    std::vector<float> stereo(static_cast<std::size_t>(2 * frames));
    for (float& sample : stereo)
        sample = value(random);
    return std::make_shared<MemoryAudioFile>(sampleRate, std::move(stereo));
}

std::shared_ptr<MemoryAudioFile> sine(int sampleRate, std::int64_t frames, double hertz, double level = 0.5)
{
    return std::make_shared<MemoryAudioFile>(sampleRate, frames,
                                             [=](double t) { return level * std::sin(2 * pi * hertz * t); });
}

/// Root mean square of the frames [first, last).
double level(const std::vector<float>& samples, std::int64_t first, std::int64_t last)
{
    return rms(std::span(samples).subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(last - first)));
}

TEST(GraphSound, NormalSpeedIsBitIdenticalBetweenTheEdges)
{
    for (const int rate : { 8000, 44100, 192000 })
        for (const std::int64_t block : { 1, 64, 282, 1000 }) {
            GraphRig rig(rate);
            const auto file = noise(rate, rate);
            const FrameRange segment{ rate / 7, rate / 2 };
            rig.play(file, segment);
            const auto heard = rig.pull(segment.count + 500, block);
            const std::int64_t edge = rate / 200;
            for (std::int64_t i = edge; i < segment.count - edge; ++i)
                ASSERT_EQ(heard[static_cast<std::size_t>(i)], file->left(segment.start + i))
                    << rate << " " << block << " " << i;
            for (std::int64_t i = segment.count; i < std::ssize(heard); ++i)
                ASSERT_EQ(heard[static_cast<std::size_t>(i)], 0) << i;
        }
}

TEST(GraphSound, LengthIsTheSegmentOverTheRate)
{
    const auto file = sine(44100, 44100 * 2, 441);
    for (const double rate : { 0.05, 0.25, 0.5, 0.99, 1.0, 1.5, 3.0 })
        for (const double pitch : { -1200.0, 0.0, 700.0 }) {
            GraphRig rig;
            rig.graph.timePitch().setRate(rate);
            rig.graph.timePitch().setPitch(pitch);
            const FrameRange segment{ 10000, 22050 };
            rig.play(file, segment);
            const auto heard = rig.pullToEnd();
            EXPECT_EQ(rig.completions, 1);
            EXPECT_NEAR(static_cast<double>(soundingLength(heard)), 22050 / rate, 44.1) << rate << " " << pitch;
        }
}

TEST(GraphSound, PitchAndSpeedAreIndependent)
{
    const auto file = sine(44100, 44100 * 8, 441);
    struct Case {
        double rate, pitchCents;
    };
    for (const auto& [rate, pitch] :
         { Case{ 0.25, 0 }, Case{ 0.5, 300 }, Case{ 1, -1200 }, Case{ 1, 1200 }, Case{ 2, 0 }, Case{ 3, -50 } }) {
        GraphRig rig;
        rig.graph.timePitch().setRate(rate);
        rig.graph.timePitch().setPitch(pitch);
        rig.play(file, { 0, file->length() });
        rig.pull(22050);
        const auto heard = rig.pull(44100);
        const double expected = 441 * std::exp2(pitch / 1200);
        EXPECT_NEAR(centsBetween(toneFrequencyHz(heard, 44100), expected), 0, 0.5) << rate << " " << pitch;
        EXPECT_NEAR(level(heard, 0, 44100), 0.5 / std::numbers::sqrt2, 0.03) << rate << " " << pitch;
    }
}

TEST(GraphSound, StretchedClickIsAtItsPlaceAndNothingComesBefore)
{
    const auto click = [](double t) { return std::abs(t - 0.5) < 0.0005 ? 0.9 : 0.0; };
    const auto file = std::make_shared<MemoryAudioFile>(44100, 44100, click);
    for (const double rate : { 0.25, 0.5, 2.0 }) {
        GraphRig rig;
        rig.graph.timePitch().setRate(rate);
        rig.play(file, { 0, 44100 });
        const auto heard = rig.pullToEnd();
        const auto peak = std::ranges::max_element(heard, {}, [](float v) { return std::abs(v); }) - heard.begin();
        // The stretcher brings onsets a constant 5.7 ms (half speed) to 21 ms (quarter speed) early.
        EXPECT_NEAR(static_cast<double>(peak) / 44100, 0.5 / rate, 0.024) << rate;
        EXPECT_LT(level(heard, 0, static_cast<std::int64_t>(0.8 * 0.5 / rate * 44100)), 1e-3) << rate;
    }
}

TEST(GraphSound, LoopJoinsWithoutAGapAndIsTakenOver)
{
    const auto file = sine(44100, 44100 * 4, 441, 0.5);
    const FrameRange region{ 44100, 22000 };
    for (const double rate : { 1.0, 0.5, 3.0 }) {
        GraphRig rig;
        rig.graph.timePitch().setRate(rate);
        rig.play(file, region, region);
        std::vector<float> heard;
        for (int pass = 0; pass < 6; ++pass) {
            const int before = rig.completions;
            while (rig.completions == before)
                for (const float sample : rig.pull(64))
                    heard.push_back(sample);
            for (const float sample : rig.pull(900))
                heard.push_back(sample);
            rig.play(file, region, region);
            ASSERT_NEAR(*rig.player->sampleTime(), 900 * rate, 130 * rate + 64) << rate << " " << pass;
        }
        // A whole number of periods fits the region, so a perfect joint is a perfect sine.
        const auto last = static_cast<std::int64_t>(5 * 22000 / rate);
        const double step = 2 * pi * 441 / 44100 * 0.5;
        EXPECT_LT(largestStep(heard, 100, last), step * 1.2) << rate;
        for (std::int64_t at = 2000; at + 100 < last; at += 100)
            ASSERT_NEAR(level(heard, at, at + 100), 0.5 / std::numbers::sqrt2, rate == 1 ? 0.01 : 0.06) << rate << " " << at;
    }
}

TEST(GraphSound, SpeedChangesWhilePlayingWithoutAStep)
{
    const auto file = sine(44100, 44100 * 20, 441, 0.5);
    GraphRig rig;
    rig.play(file, { 0, file->length() });
    std::vector<float> heard = rig.pull(20000);
    for (const auto& [rate, pitch] :
         { std::pair{ 0.5, 0.0 }, { 1.0, 0.0 }, { 2.0, 100.0 }, { 0.3, 0.0 }, { 1.0, 0.0 }, { 1.0, 200.0 }, { 1.0, 0.0 } }) {
        rig.graph.timePitch().setRate(rate);
        rig.graph.timePitch().setPitch(pitch);
        for (const float sample : rig.pull(20000))
            heard.push_back(sample);
    }
    // The two sides of a crossing may be out of phase, but neither a step nor a hole longer than the crossing may be heard.
    const double step = 2 * pi * 441 * std::exp2(200.0 / 1200) / 44100 * 0.5;
    EXPECT_LT(largestStep(heard, 100, std::ssize(heard)), 2 * step);
    for (std::int64_t at = 2000; at + 1500 < std::ssize(heard); at += 500)
        EXPECT_GT(level(heard, at, at + 1500), 0.15) << at;
}

TEST(GraphSound, PauseHoldsThePlace)
{
    const auto file = noise(44100, 44100);
    GraphRig rig;
    rig.play(file, { 0, 44100 });
    const auto before = rig.pull(5000);
    rig.player->pause();
    const auto pause = rig.pull(5000);
    EXPECT_LE(soundingLength(pause), 198 + 64);
    rig.player->play();
    const auto after = rig.pull(30000);
    // What faded at the pause is heard again; after the ramp of the return every frame is in its place.
    const auto first = static_cast<std::int64_t>(std::ssize(before));
    for (std::int64_t i = 300; i < 20000; ++i)
        ASSERT_EQ(after[static_cast<std::size_t>(i)], file->left(first + i)) << i;
}

TEST(GraphSound, StemsInStepSumToTheMixAndMuteAlone)
{
    constexpr int stems = 6;
    GraphRig rig;
    rig.player.reset();
    auto sum = rig.graph.makeMixer();
    rig.graph.connect(*sum, rig.graph.timePitch());
    struct Stem {
        std::unique_ptr<PlayerNode> player;
        std::unique_ptr<MixerNode> gain;
        std::shared_ptr<MemoryAudioFile> file;
    };
    std::vector<Stem> parts;
    for (int i = 0; i < stems; ++i) {
        parts.push_back({ rig.graph.makePlayer(), rig.graph.makeMixer(), sine(44100, 44100 * 2, 100.0 * (i + 1), 0.1) });
        rig.graph.connect(*parts.back().player, *parts.back().gain);
        rig.graph.connect(*parts.back().gain, *sum);
    }
    {
        const GraphChange change(rig.graph);
        for (auto& part : parts)
            part.player->scheduleSegment(part.file, { 4410, 44100 }, nullptr);
        for (auto& part : parts)
            part.player->play();
    }
    rig.skipDelay();
    const auto expect = [&](std::int64_t frame, int without) {
        float value = 0;
        for (int i = 0; i < stems; ++i)
            value += i == without ? 0 : parts[static_cast<std::size_t>(i)].file->left(4410 + frame);
        return value;
    };
    const auto heard = rig.pull(10000);
    for (std::int64_t i = 500; i < 10000; ++i)
        ASSERT_NEAR(heard[static_cast<std::size_t>(i)], expect(i, -1), 1e-6) << i;
    parts[2].gain->setOutputVolume(0);
    const auto gliding = rig.pull(4410);
    const auto muted = rig.pull(10000);
    const std::int64_t first = std::ssize(heard) + std::ssize(gliding);
    for (std::int64_t i = 0; i < 10000; ++i)
        ASSERT_NEAR(muted[static_cast<std::size_t>(i)], expect(first + i, 2), 1e-6) << i;
}

TEST(GraphSound, MuteIsHeardSoonAtAnySpeed)
{
    for (const double rate : { 0.1, 0.5, 1.0 }) {
        GraphRig rig;
        rig.player.reset();
        auto sum = rig.graph.makeMixer();
        rig.graph.connect(*sum, rig.graph.timePitch());
        rig.graph.timePitch().setRate(rate);
        std::unique_ptr<PlayerNode> players[] = { rig.graph.makePlayer(), rig.graph.makePlayer() };
        std::unique_ptr<MixerNode> gains[] = { rig.graph.makeMixer(), rig.graph.makeMixer() };
        {
            const GraphChange change(rig.graph);
            for (int i = 0; i < 2; ++i) {
                rig.graph.connect(*players[i], *gains[i]);
                rig.graph.connect(*gains[i], *sum);
                players[i]->scheduleSegment(sine(44100, 441000, 441, 0.3), { 0, 441000 }, nullptr);
            }
            for (auto& player : players)
                player->play();
        }
        std::vector<float> heard = rig.pull(20000);
        for (const double volume : { 0.0, 1.0, 0.0 }) {
            gains[1]->setOutputVolume(volume);
            for (const float sample : rig.pull(2048 + 256 + 400))
                heard.push_back(sample);
            const auto after = rig.pull(8000);
            EXPECT_NEAR(level(after, 0, 8000), (0.3 + 0.3 * volume) / std::numbers::sqrt2, 0.015) << rate << " " << volume;
            heard.insert(heard.end(), after.begin(), after.end());
        }
        EXPECT_LT(largestStep(heard, 200, std::ssize(heard)), 2 * pi * 441 / 44100 * 0.6 * 1.5) << rate;
    }
}

TEST(GraphSound, EqualizerHasTheSetGainAtEachCentreWhateverTheOthersDo)
{
    const float settings[][5] = { { 12, 0, 0, 0, 0 }, { 0, -12, 0, 0, 0 },    { 0, 0, 7.5F, 0, 0 },     { 0, 0, 0, 12, 0 },
                                  { 0, 0, 0, 0, -6 }, { 12, 12, 12, 12, 12 }, { -12, 12, -12, 12, -12 } };
    for (const auto& gains : settings)
        for (int band = 0; band < EqualizerNode::bandCount; ++band) {
            const auto file = sine(44100, 44100, EqualizerNode::frequenciesHz[band], 0.1);
            GraphRig rig;
            for (int i = 0; i < EqualizerNode::bandCount; ++i)
                rig.graph.equalizer().setGain(i, gains[i]);
            rig.graph.equalizer().setBypass(false);
            rig.play(file, { 0, 44100 });
            const auto heard = rig.pull(44100);
            const double gainDb = 20 * std::log10(level(heard, 22050, 22050 + 11025) / (0.1 / std::numbers::sqrt2));
            EXPECT_NEAR(gainDb, static_cast<double>(gains[band]), 0.1) << band;
        }
}

TEST(GraphSound, BoostIsLimitedToFullScaleAndBypassIsTransparentAgain)
{
    const auto file = sine(44100, 44100 * 3, 1000, 0.9);
    GraphRig rig;
    rig.graph.equalizer().setGain(2, 12);
    rig.graph.equalizer().setBypass(false);
    rig.play(file, { 0, file->length() });
    const auto boosted = rig.pull(44100);
    EXPECT_LE(*std::ranges::max_element(boosted), 1.0F);
    EXPECT_GT(level(boosted, 22050, 44100), 0.65);
    rig.graph.equalizer().setBypass(true);
    rig.pull(44100);
    const auto plain = rig.pull(22050);
    const std::int64_t first = std::ssize(boosted) + 44100;
    for (std::int64_t i = 0; i < 22050; ++i)
        ASSERT_EQ(plain[static_cast<std::size_t>(i)], file->left(first + i)) << i;
}

TEST(GraphSound, AFileThatBreaksOffIsSilentToItsEnd)
{
    const auto file = sine(44100, 44100, 441);
    file->breakAt(20000);
    GraphRig rig;
    rig.play(file, { 0, 44100 });
    const auto heard = rig.pullToEnd();
    EXPECT_EQ(rig.completions, 1);
    EXPECT_NEAR(static_cast<double>(soundingLength(heard)), 20000, 200);
    EXPECT_NEAR(static_cast<double>(std::ssize(heard)), 44100, 300);
}

}  // namespace
}  // namespace quillet
