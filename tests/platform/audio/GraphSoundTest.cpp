// What comes out of the graph, judged by physical properties: identity, length, pitch, level, silence, and no step at a join.

#include "tests/platform/audio/GraphRigs.h"
#include "tests/support/MemoryAudioFile.h"
#include "tests/support/SignalAnalysis.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

namespace quillet {
namespace {

constexpr double pi = std::numbers::pi;

std::shared_ptr<MemoryAudioFile> noise(int sampleRate, std::int64_t frames)
{
    return std::make_shared<MemoryAudioFile>(sampleRate, whiteNoise(2 * frames, 0.9F));
}

std::shared_ptr<MemoryAudioFile> sine(int sampleRate, std::int64_t frames, double hertz, double level = 0.5)
{
    return std::make_shared<MemoryAudioFile>(sampleRate, frames,
                                             [=](double t) { return level * std::sin(2 * pi * hertz * t); });
}

/// A graph that plays several files in step, each with a gain of its own.
struct StemRig : GraphRig {
    std::vector<std::unique_ptr<PlayerNode>> players;
    std::vector<std::unique_ptr<MixerNode>> gains;
    std::unique_ptr<MixerNode> sum = graph.makeMixer();

    StemRig(const std::vector<std::shared_ptr<MemoryAudioFile>>& files, FrameRange segment)
    {
        player.reset();
        graph.connect(*sum, graph.timePitch());
        const GraphChange change(graph);
        for (const auto& file : files) {
            players.push_back(graph.makePlayer());
            gains.push_back(graph.makeMixer());
            graph.connect(*players.back(), *gains.back());
            graph.connect(*gains.back(), *sum);
            players.back()->scheduleSegment(file, segment, nullptr);
        }
        for (auto& each : players)
            each->play();
    }
};

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
            const auto& heard = rig.pullToEnd();
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
        EXPECT_NEAR(rms(heard), 0.5 / std::numbers::sqrt2, 0.03) << rate << " " << pitch;
    }
}

TEST(GraphSound, StretchedClickIsAtItsPlaceAndNothingComesBefore)
{
    const auto click = [](double t) { return std::abs(t - 0.5) < 0.0005 ? 0.9 : 0.0; };
    const auto file = std::make_shared<MemoryAudioFile>(44100, 44100, click);
    // The stretcher brings onsets this much early.
    for (const auto& [rate, earlySeconds] : { std::pair(0.25, 0.021), { 0.5, 0.0057 }, { 2.0, 0.0 } }) {
        GraphRig rig;
        rig.graph.timePitch().setRate(rate);
        rig.play(file, { 0, 44100 });
        const auto& heard = rig.pullToEnd();
        const auto peak = std::ranges::max_element(heard, {}, [](float v) { return std::abs(v); }) - heard.begin();
        EXPECT_NEAR(static_cast<double>(peak) / 44100, 0.5 / rate - earlySeconds, 0.003) << rate;
        EXPECT_LT(rms(part(heard, 0, static_cast<std::int64_t>(0.8 * 0.5 / rate * 44100))), 1e-3) << rate;
    }
}

TEST(GraphSound, LoopJoinsWithoutAGapAndIsTakenOver)
{
    const auto file = sine(44100, 44100 * 4, 441, 0.5);
    const FrameRange region{ 44100, 22000 };
    for (const double rate : { 1.0, 0.5, 3.0 }) {
        GraphRig rig;
        rig.graph.timePitch().setRate(rate);
        rig.play(file, region, endlessly(region));
        for (int pass = 0; pass < 6; ++pass) {
            while (rig.completions == pass)
                rig.pull(64);
            rig.pull(900);
            rig.play(file, region, endlessly(region));
            ASSERT_NEAR(*rig.player->sampleTime(), 900 * rate, 130 * rate + 64) << rate << " " << pass;
        }
        // A whole number of periods fits the region, so a perfect joint is a perfect sine.
        const auto last = static_cast<std::int64_t>(5 * 22000 / rate);
        const double step = 2 * pi * 441 / 44100 * 0.5;
        EXPECT_LT(maxStep(part(rig.heard, 100, last - 100)), step * 1.2) << rate;
        for (std::int64_t at = 2000; at + 100 < last; at += 100)
            ASSERT_NEAR(rms(part(rig.heard, at, 100)), 0.5 / std::numbers::sqrt2, rate == 1 ? 0.01 : 0.06) << rate << " " << at;
    }
}

TEST(GraphSound, SpeedChangesWhilePlayingWithoutAStep)
{
    const auto file = sine(44100, 44100 * 20, 441, 0.5);
    GraphRig rig;
    rig.play(file, { 0, file->length() });
    rig.pull(20000);
    for (const auto& [rate, pitch] :
         { std::pair{ 0.5, 0.0 }, { 1.0, 0.0 }, { 2.0, 100.0 }, { 0.3, 0.0 }, { 1.0, 0.0 }, { 1.0, 200.0 }, { 1.0, 0.0 } }) {
        rig.graph.timePitch().setRate(rate);
        rig.graph.timePitch().setPitch(pitch);
        rig.pull(20000);
    }
    // The two sides of a crossing may be out of phase, but neither a step nor a hole longer than the crossing may be heard.
    const double step = 2 * pi * 441 * std::exp2(200.0 / 1200) / 44100 * 0.5;
    EXPECT_LT(maxStep(std::span(rig.heard).subspan(100)), 2 * step);
    for (std::int64_t at = 2000; at + 1500 < std::ssize(rig.heard); at += 500)
        EXPECT_GT(rms(part(rig.heard, at, 1500)), 0.15) << at;
}

TEST(GraphSound, AFileThatIsReadSlowlySoundsTheSame)
{
    const auto render = [](std::chrono::milliseconds readTime) {
        const auto file = noise(44100, 44100);
        file->setReadTime(readTime);
        GraphRig rig;
        rig.graph.timePitch().setRate(2.5);
        rig.play(file, { 0, 44100 });
        return rig.pullToEnd();
    };
    const auto sound = render(std::chrono::milliseconds(0));
    EXPECT_EQ(render(std::chrono::milliseconds(10)), sound);
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
    std::vector<std::shared_ptr<MemoryAudioFile>> files;
    for (int i = 1; i <= 6; ++i)
        files.push_back(sine(44100, 44100 * 2, 100.0 * i, 0.1));
    StemRig rig(files, { 4410, 44100 });
    const auto expect = [&](std::int64_t frame, const std::shared_ptr<MemoryAudioFile>& without) {
        float value = 0;
        for (const auto& file : files)
            value += file == without ? 0 : file->left(4410 + frame);
        return value;
    };
    rig.pull(10000);
    for (std::int64_t i = 500; i < 10000; ++i)
        ASSERT_NEAR(rig.heard[static_cast<std::size_t>(i)], expect(i, nullptr), 1e-6) << i;
    rig.gains[2]->setOutputVolume(0);
    rig.pull(14410);
    for (std::int64_t i = 14410; i < 24410; ++i)
        ASSERT_NEAR(rig.heard[static_cast<std::size_t>(i)], expect(i, files[2]), 1e-6) << i;
}

TEST(GraphSound, MuteIsHeardSoonAtAnySpeed)
{
    for (const double rate : { 0.1, 0.5, 1.0 }) {
        const auto file = sine(44100, 441000, 441, 0.3);
        StemRig rig({ file, file }, { 0, 441000 });
        rig.graph.timePitch().setRate(rate);
        rig.pull(20000);
        for (const double volume : { 0.0, 1.0, 0.0 }) {
            rig.gains[1]->setOutputVolume(volume);
            rig.pull(2048 + 256 + 400);
            EXPECT_NEAR(rms(rig.pull(8000)), (0.3 + 0.3 * volume) / std::numbers::sqrt2, 0.015) << rate << " " << volume;
        }
        EXPECT_LT(maxStep(std::span(rig.heard).subspan(200)), 2 * pi * 441 / 44100 * 0.6 * 1.5) << rate;
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
            const double gainDb = 20 * std::log10(rms(part(heard, 22050, 11025)) / (0.1 / std::numbers::sqrt2));
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
    EXPECT_GT(rms(part(boosted, 22050, 22050)), 0.65);
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
    const auto& heard = rig.pullToEnd();
    EXPECT_EQ(rig.completions, 1);
    EXPECT_NEAR(static_cast<double>(soundingLength(heard)), 20000, 200);
    EXPECT_NEAR(static_cast<double>(std::ssize(heard)), 44100, 300);
}

}  // namespace
}  // namespace quillet
