// What changes while it plays: places, joints, plans, blocks and rates, on both channels, with a main thread that may be late.

#include "tests/platform/audio/GraphRigs.h"
#include "tests/support/ChirpTracker.h"
#include "tests/support/SignalAnalysis.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <numbers>
#include <random>

namespace quillet {
namespace {

constexpr double pi = std::numbers::pi;

/// Half a second of frames.
constexpr std::int64_t half = 22050;

std::shared_ptr<MemoryAudioFile> twoTones(int rate, double seconds, double leftHz, double rightHz)
{
    std::vector<float> stereo;
    for (std::int64_t i = 0; i < static_cast<std::int64_t>(seconds * rate); ++i)
        for (const double hertz : { leftHz, rightHz })
            stereo.push_back(static_cast<float>(0.4 * std::sin(2 * pi * hertz * static_cast<double>(i) / rate)));
    return std::make_shared<MemoryAudioFile>(rate, std::move(stereo));
}

/// One tone up to `changeSeconds`, another one after it.
std::shared_ptr<MemoryAudioFile> toneThen(double seconds, double changeSeconds, double firstHz, double thenHz)
{
    return std::make_shared<MemoryAudioFile>(44100, static_cast<std::int64_t>(44100 * seconds), [=](double t) {
        return 0.5 * std::sin(2 * pi * (t < changeSeconds ? firstHz : thenHz) * t);
    });
}

/// Frames in which a tone of `hertz` is most of what is heard, in steps of 4 ms.
std::int64_t framesOfTone(const std::vector<float>& samples, double hertz)
{
    constexpr std::int64_t window = 176;
    std::int64_t frames = 0;
    for (std::int64_t at = 0; at + window <= std::ssize(samples); at += window) {
        double cosine = 0;
        double sine = 0;
        for (std::int64_t i = 0; i < window; ++i) {
            const auto sample = static_cast<double>(samples[static_cast<std::size_t>(at + i)]);
            cosine += sample * std::cos(2 * pi * hertz * static_cast<double>(i) / 44100);
            sine += sample * std::sin(2 * pi * hertz * static_cast<double>(i) / 44100);
        }
        frames += std::hypot(cosine, sine) / window > 0.09 ? window : 0;
    }
    return frames;
}

TEST(GraphChange, BothSidesComeThroughEveryPathUnmixed)
{
    struct Case {
        int fileRate, outputRate;
        double rate;
    };
    for (const auto& [fileRate, outputRate, rate] : { Case{ 44100, 44100, 1 },
                                                      { 44100, 44100, 0.5 },
                                                      { 44100, 48000, 1 },
                                                      { 48000, 44100, 2 },
                                                      { 96000, 96000, 0.5 },
                                                      { 192000, 48000, 0.8 } }) {
        SCOPED_TRACE(testing::Message() << fileRate << " " << outputRate << " " << rate);
        PacedRig rig(512, outputRate);
        rig.graph.timePitch().setRate(rate);
        rig.play(twoTones(fileRate, 4, 441, 1000), { fileRate / 10, fileRate * 3 });
        rig.pullSeconds(1.2);
        const auto steady = static_cast<std::int64_t>(0.5 * outputRate);
        const std::int64_t first = std::ssize(rig.left) - steady;
        EXPECT_NEAR(centsBetween(toneFrequencyHz(part(rig.left, first, steady), outputRate), 441), 0, 0.5);
        EXPECT_NEAR(centsBetween(toneFrequencyHz(part(rig.right, first, steady), outputRate), 1000), 0, 1);
        EXPECT_NEAR(rms(part(rig.left, first, steady)), 0.4 / std::numbers::sqrt2, 0.03);
    }
}

TEST(GraphChange, AnotherDeviceRateLeavesNoImagesAndEveryFrameInItsPlace)
{
    const auto tone =
        std::make_shared<MemoryAudioFile>(44100, 44100 * 2, [](double t) { return 0.5 * std::sin(2 * pi * 15000 * t); });
    PacedRig rig(512, 48000);
    rig.play(tone, { 0, tone->length() });
    rig.pullSeconds(1.5);
    const auto steady = part(rig.left, 24000, 32768);
    const auto levelAt = [&](double hertz) { return 20 * std::log10(toneSize(steady, hertz / 48000)); };
    EXPECT_LT(levelAt(48000 - (44100 - 15000)) - levelAt(15000), -110);

    // However it is entered, a click is where it belongs.
    const auto clicks = std::make_shared<MemoryAudioFile>(
        44100, 44100 * 2, [](double t) { return std::abs(std::fmod(t, 0.1) - 0.05) < 0.6 / 44100 ? 0.9 : 0.0; });
    for (const std::int64_t start : { 0, 7777, 44100 }) {
        PacedRig jump(512, 48000);
        jump.play(clicks, { start, 44100 / 5 });
        jump.pullSeconds(0.3);
        const auto begin = firstSound(jump.left, 0.3F);
        ASSERT_TRUE(begin);
        const double expected =
            std::ceil((static_cast<double>(start) / 44100 - 0.05) / 0.1) * 0.1 + 0.05 - static_cast<double>(start) / 44100;
        // The run is entered at a block's first frame.
        const std::int64_t place = (*begin - Limiter::delayFrames) % 512 - std::llround(expected * 48000) % 512;
        EXPECT_LE(std::min((place + 512) % 512, (512 - place) % 512), 2) << start;
    }
}

TEST(GraphChange, EveryBlockSizeOfADevicePlaysWithoutADropOut)
{
    for (const std::int64_t block : { 64, 1000, 2205, 9000, 16384 })
        for (const double rate : { 1.0, 3.0 }) {
            SCOPED_TRACE(testing::Message() << block << " at " << rate);
            PacedRig rig(block);
            rig.graph.timePitch().setRate(rate);
            rig.play(twoTones(44100, 16, 441, 600), { 100, 44100 * 15 });
            rig.pullSeconds(3);
            EXPECT_EQ(rig.graph.underruns(), 0);
            const auto first = firstSound(rig.left, 0.1F);
            ASSERT_TRUE(first);
            EXPECT_LT(longestHole(rig.left, *first, std::ssize(rig.left)), 44);
            EXPECT_LT(longestHole(rig.right, *first, std::ssize(rig.right)), 44);
        }
}

TEST(GraphChange, WhereFramesAreMissingOnlyTheLastMillisecondsFadeAndNothingIsLost)
{
    const auto noise = whiteNoise(2 * 44100, 0.9F);
    const auto file = std::make_shared<MemoryAudioFile>(44100, noise);
    PacedRig rig(64);
    rig.play(file, { 0, file->length() });
    rig.pull(6400);
    rig.output.settle(950);
    const auto song = channelOf(noise, 0);
    std::vector<float> block(2 * 60000);
    rig.output.pullAtOnce(block);
    EXPECT_EQ(rig.graph.underruns(), 1);
    const auto starved = channelOf(block, 0);
    const std::int64_t sounding = soundingLength(starved);
    ASSERT_GT(sounding, 1800) << "what there was is heard";
    const std::int64_t first = findIn(std::span(song).first(12000), part(starved, 0, 100)).offset;
    for (std::int64_t i = 0; i < sounding - 200; ++i)
        ASSERT_EQ(starved[static_cast<std::size_t>(i)], song[static_cast<std::size_t>(first + i)]) << i;
    rig.left.clear();
    rig.pull(6400);
    const auto again = firstSound(rig.left);
    ASSERT_TRUE(again);
    const auto found = findIn(std::span(song).first(20000), part(rig.left, *again + 150, 100));
    EXPECT_NEAR(static_cast<double>(found.offset), static_cast<double>(first + sounding + 150), 2)
        << "it goes on where it ran dry";
}

TEST(GraphChange, AnEditIsEnteredWithoutAHoleOnDevicesOfAnyBlock)
{
    for (const std::int64_t block : { 282, 8820 })
        for (const double rate : { 1.0, 0.5 }) {
            SCOPED_TRACE(testing::Message() << block << " at " << rate);
            const auto file = toneThen(20, 10, 441, 1000);
            PacedRig rig(block);
            rig.graph.timePitch().setRate(rate);
            rig.play(file, { 0, 44100 * 5 });
            rig.pull(44100);
            for (int edit = 0; edit < 6; ++edit) {
                const std::int64_t start = edit % 2 == 0 ? 44100 * 11 : 44100;
                rig.settle();
                rig.play(file, { start, 44100 * 4 });
                rig.pull(block);
                rig.waitUntilReady();
                rig.pull(half);
            }
            const auto first = firstSound(rig.left, 0.1F);
            ASSERT_TRUE(first);
            EXPECT_LE(longestHole(rig.left, *first, std::ssize(rig.left), 0.05F), 44);
            EXPECT_EQ(rig.graph.underruns(), 0);
        }
}

TEST(GraphChange, ALoopThatIsSwitchedOffEndsWithItsPassHoweverLateTheMainThreadIs)
{
    // The pass falls from a tone to another one: of a pass that is not wanted the first tone would be heard.
    const auto file = toneThen(3, 1.5, 441, 3000);
    for (const double rate : { 1.0, 0.5 })
        for (const std::int64_t before : { 30000, 2000, 600, 200, 20, -100, -441 }) {
            SCOPED_TRACE(testing::Message() << rate << " " << before << " frames before the joint");
            PacedRig rig(20);
            rig.graph.timePitch().setRate(rate);
            const FrameRange region{ 44100, 44100 };
            rig.play(file, region, endlessly(region));
            rig.waitUntilReady();
            const auto end = static_cast<std::int64_t>(44100 / rate);
            rig.pull(end - before - before % 20, PacedRig::Main::late);
            rig.player->setPlan({});
            // The device takes more before what replaces the plan is ready.
            rig.pull(200, PacedRig::Main::late);
            rig.waitUntilReady();
            rig.pull(std::max<std::int64_t>(0, before) + half);
            EXPECT_EQ(rig.completions, 1);
            const std::int64_t length = soundingLength(rig.left) - Limiter::delayFrames;
            const std::int64_t expected = before > 600 ? end : std::max(end, end - before + 560);
            EXPECT_NEAR(static_cast<double>(length), static_cast<double>(expected), before > 600 ? 4 / rate : 580);
            std::vector<float> tail(rig.left.end() - half, rig.left.end());
            EXPECT_LE(framesOfTone(tail, 441), 352);
        }
}

TEST(GraphChange, AnEndThatMovesWhileItSoundsIsHeardInItsNewPlaceWithoutABreak)
{
    const auto noise = whiteNoise(2 * 3 * 44100, 0.5F);
    const auto file = std::make_shared<MemoryAudioFile>(44100, noise);
    const auto left = channelOf(noise, 0);
    const auto right = channelOf(noise, 1);
    constexpr std::int64_t begin = 4410;
    for (const std::int64_t block : { 64, 4096 })
        for (const std::int64_t count : { 3 * half, half, half + 8192 }) {
            SCOPED_TRACE(testing::Message() << block << " frames to " << count);
            PacedRig rig(block);
            rig.play(file, { begin, 2 * half }, endlessly({ 0, half }));
            rig.pull(half / 2);
            ASSERT_TRUE(rig.player->moveEnd(count));
            rig.waitUntilReady();
            while (rig.completions == 0 && std::ssize(rig.left) < 44100 * 5)
                rig.pull(block);
            rig.pull(half / 2);
            const auto first = firstSound(rig.left);
            ASSERT_TRUE(first);
            // Up to the joint, and from there.
            const std::int64_t joint = *first + count;
            ASSERT_GT(std::ssize(rig.left), joint + 4000);
            for (std::int64_t i = *first + 200; i < joint + 4000; ++i) {
                if (i >= joint - 200 && i < joint)
                    continue;
                const auto expected = static_cast<std::size_t>(i < joint ? begin + i - *first : i - joint);
                ASSERT_NEAR(rig.left[static_cast<std::size_t>(i)], left[expected], 1e-6) << i - *first;
                ASSERT_NEAR(rig.right[static_cast<std::size_t>(i)], right[expected], 1e-6) << i - *first;
            }
            EXPECT_FALSE(rig.player->moveEnd(4 * half)) << "it is beyond its end";
            EXPECT_EQ(rig.completions, 1);
        }
    // The position goes on, and an end that is behind the sound is refused.
    PacedRig rig(64);
    rig.graph.timePitch().setRate(0.5);
    rig.play(file, { begin, half });
    rig.pullSeconds(0.6);
    EXPECT_FALSE(rig.player->moveEnd(4410));
    ASSERT_TRUE(rig.player->moveEnd(2 * half));
    rig.waitUntilReady();
    for (int i = 1; i <= 10; ++i) {
        rig.pull(4416);
        EXPECT_NEAR(*rig.player->sampleTime(), 0.5 * (26460 + i * 4416), 1500);
    }
    rig.pullSeconds(1);
    EXPECT_EQ(rig.completions, 1);
    EXPECT_NEAR(static_cast<double>(soundingLength(rig.left) - *firstSound(rig.left)), 4 * half, 60);
}

TEST(GraphChange, TheChosenChannelsAreHeardOnBothSidesAndAChangeIsNoHole)
{
    const auto tones = twoTones(44100, 20, 441, 1000);
    // A voice in the middle, over it a tone on one side.
    std::vector<float> middle;
    for (int i = 0; i < 44100 * 4; ++i) {
        const auto voice = static_cast<float>(0.4 * std::sin(2 * pi * 700 * i / 44100));
        middle.push_back(voice + static_cast<float>(0.1 * std::sin(2 * pi * 441 * i / 44100)));
        middle.push_back(voice);
    }
    const auto song = std::make_shared<MemoryAudioFile>(44100, std::move(middle));
    for (const double rate : { 1.0, 0.5 }) {
        SCOPED_TRACE(rate);
        PacedRig rig;
        rig.graph.timePitch().setRate(rate);
        rig.play(tones, { 0, tones->length() });
        rig.pullSeconds(0.6);
        for (const auto& [mode, firstHz, secondHz] : { std::tuple{ ChannelMode::left, 0.4, 0.0 },
                                                       { ChannelMode::right, 0.0, 0.4 },
                                                       { ChannelMode::mono, 0.2, 0.2 },
                                                       { ChannelMode::sides, 0.28, 0.28 } }) {
            rig.graph.setChannels(mode);
            rig.pullSeconds(1);
            EXPECT_TRUE(std::ranges::equal(part(rig.left, std::ssize(rig.left) - 100, 100),
                                           part(rig.right, std::ssize(rig.right) - 100, 100)));
            const auto steady = part(rig.left, std::ssize(rig.left) - half, half);
            EXPECT_NEAR(toneSize(steady, 441.0 / 44100), firstHz, 0.02);
            EXPECT_NEAR(toneSize(steady, 1000.0 / 44100), secondHz, 0.02);
        }
        rig.graph.setChannels(ChannelMode::stereo);
        rig.pullSeconds(1);
        EXPECT_LT(toneSize(part(rig.left, std::ssize(rig.left) - half, half), 1000.0 / 44100), 0.002);
        EXPECT_EQ(rig.graph.underruns(), 0);
        const auto first = *firstSound(rig.left, 0.1F);
        EXPECT_LT(longestHole(rig.left, first, std::ssize(rig.left)), 60);
        for (std::int64_t i = first; i + 1 < std::ssize(rig.left); ++i)
            ASSERT_LT(std::abs(rig.left[static_cast<std::size_t>(i + 1)] - rig.left[static_cast<std::size_t>(i)]), 0.12F) << i;

        PacedRig sung;
        sung.graph.timePitch().setRate(rate);
        sung.graph.setChannels(ChannelMode::sides);
        sung.play(song, { 0, song->length() });
        sung.pullSeconds(1.5);
        const auto heard = part(sung.left, std::ssize(sung.left) - half, half);
        EXPECT_NEAR(toneSize(heard, 441.0 / 44100), 0.07, 0.01);
        EXPECT_LT(toneSize(heard, 700.0 / 44100), 1e-4) << "the middle is gone, however it is stretched";
    }
}

TEST(GraphChange, PausesAreAsLongAsPlannedWhoeverIsLate)
{
    const auto file = twoTones(44100, 3, 441, 600);
    for (const double rate : { 1.0, 0.5, 3.0 }) {
        PacedRig rig(64);
        rig.graph.timePitch().setRate(rate);
        const FrameRange region{ 4410, 13230 };
        rig.play(file, region, endlessly(region, 0.25));
        rig.pullSeconds(2.4);
        const auto pauses = gaps(rig.left, 4410);
        ASSERT_GE(pauses.size(), 2U) << rate;
        for (const Gap& pause : pauses)
            EXPECT_NEAR(static_cast<double>(pause.frameCount), 0.25 * 44100, 44) << rate;
        EXPECT_NEAR(static_cast<double>(pauses[1].firstFrame - pauses[0].firstFrame), 13230 / rate + 11025, 2) << rate;
    }
}

TEST(GraphChange, PassesOfOtherSpeedsBeginExactlyAtTheJoint)
{
    const auto file = twoTones(44100, 4, 441, 600);
    PacedRig rig(64);
    rig.graph.timePitch().setRate(0.5);
    PassPlan plan;
    for (const double rate : { 1.0, 2.0, 0.75 }) {
        PlannedPass pass;
        pass.segment = { 44100, 22050 };
        pass.rate = rate;
        plan.passes.push_back(pass);
    }
    rig.play(file, { 44100, 22050 }, plan);
    rig.pullSeconds(3.2);
    const auto first = firstSound(rig.left);
    ASSERT_TRUE(first);
    EXPECT_NEAR(static_cast<double>(soundingLength(rig.left) - *first), 22050 * (2 + 1 + 0.5 + 1 / 0.75), 40);
    EXPECT_LT(longestHole(rig.left, *first, *first + 22050 * 4), 60);
}

TEST(GraphChange, APassKeepsItsSpeedWhenWhatFollowsItIsChanged)
{
    const auto file = twoTones(44100, 4, 441, 600);
    const FrameRange region{ 44100, 22050 };
    PacedRig rig(64);
    rig.graph.timePitch().setRate(0.5);
    PassPlan plan = endlessly(region);
    plan.passes[0].rate = 2;
    rig.play(file, region, plan);
    while (rig.completions == 0 && std::ssize(rig.left) < 44100 * 5)
        rig.pull(64);
    rig.pull(2000);
    // Takes over the fast pass that sounds by plan, and lets nothing follow it.
    rig.graph.timePitch().setRate(2);
    rig.play(file, region);
    rig.waitUntilReady();
    rig.pull(44100 * 2);
    const auto first = firstSound(rig.left);
    ASSERT_TRUE(first);
    EXPECT_NEAR(static_cast<double>(soundingLength(rig.left) - *first), 44100 + 11025, 60);
}

TEST(GraphChange, ThePlayHeadIsTrueThroughChangesOfSpeedAndTheRegionsEndIsHeard)
{
    // Twenty changes; the whole measure is the benchmark's.
    PacedRig rig(64);
    const auto file = ChirpTracker::file(44100, 20);
    rig.play(file, { 0, file->length() });
    std::mt19937 random(5);
    std::uniform_real_distribution<double> rates(0.25, 3);
    std::vector<double> errors;
    for (int change = 0; change < 20; ++change) {
        for (int i = 0; i < 25; ++i) {
            rig.pull(882);
            const double reported = rig.player->sampleTime().value_or(0) / 44100;
            const auto truth = ChirpTracker::secondsAt(std::span(rig.left).last(882), 44100, 0);
            // The window's middle is 10 ms old.
            if (reported > 1 && reported < 19 && truth)
                errors.push_back(std::abs(reported - 0.01 * rig.graph.timePitch().rate() - *truth));
        }
        rig.graph.timePitch().setRate(change % 5 == 4 ? 1 : rates(random));
    }
    std::ranges::sort(errors);
    ASSERT_GT(errors.size(), 100U);
    EXPECT_LT(errors[errors.size() / 2], 0.003);
    EXPECT_LT(errors[errors.size() * 9 / 10], 0.025) << "the rate of the last 10 ms may not be what is set";

    struct Case {
        double before, after;
    };
    for (const auto& [before, after] : { Case{ 0.5, 3 }, { 0.5, 1.5 }, { 0.9, 0.6 }, { 3, 0.9 } }) {
        PacedRig marked(64);
        marked.graph.timePitch().setRate(before);
        const auto song = toneThen(4, 2 - 0.15, 441, 3000);
        marked.play(song, { 0, 44100 * 2 });
        marked.pullSeconds(0.8 / before);
        marked.graph.timePitch().setRate(after);
        marked.pullSeconds(2.5 / after);
        EXPECT_EQ(marked.completions, 1);
        const double expected = 0.15 * 44100 / after;
        EXPECT_NEAR(static_cast<double>(framesOfTone(marked.left, 3000)), expected, 0.1 * expected + 176)
            << before << " to " << after;
    }
}

TEST(GraphChange, StemsOfOtherLengthsAndRatesLoopInStepToTheirOwnEnds)
{
    PacedRig rig(64);
    rig.player.reset();
    const auto sum = rig.graph.makeMixer();
    rig.graph.connect(*sum, rig.graph.timePitch());
    const std::shared_ptr<MemoryAudioFile> files[] = { twoTones(44100, 1, 441, 441), twoTones(48000, 1.2, 1000, 1000) };
    std::vector<std::unique_ptr<PlayerNode>> players;
    for (int i = 0; i < 2; ++i) {
        players.push_back(rig.graph.makePlayer());
        rig.graph.connect(*players.back(), *sum);
    }
    int completions = 0;
    const auto play = [&] {
        const GraphChange change(rig.graph);
        for (std::size_t i = 0; i < 2; ++i) {
            const int rate = files[i]->sampleRate();
            players[i]->stop();
            players[i]->scheduleSegment(files[i], { rate / 2, rate },
                                        i == 0 ? [&] { ++completions; } : PlayerNode::CompletionHandler());
        }
        players[0]->setPlan(endlessly({ half, 44100 }));
        for (auto& player : players)
            player->play();
    };
    play();
    const auto passFrames = static_cast<std::int64_t>(0.7 * 44100);
    for (int pass = 1; pass <= 3; ++pass) {
        while (completions < pass && std::ssize(rig.left) < 44100 * 5)
            rig.pull(64);
        rig.pull(441);
        play();
        EXPECT_NEAR(*players[0]->sampleTime(), 441, 150) << "the pass that sounds is taken over, not started again";
    }
    const auto first = firstSound(rig.left);
    ASSERT_TRUE(first);
    // In each pass the first stem is heard for half a second, the second one for 0.7 s.
    EXPECT_NEAR(static_cast<double>(framesOfTone(rig.left, 441)), 3 * half, 1200);
    EXPECT_NEAR(static_cast<double>(framesOfTone(rig.left, 1000)), static_cast<double>(3 * passFrames), 1500);
}

TEST(GraphChange, OneReadErrorIsSilentOnceAndNothingMoves)
{
    const auto file = twoTones(44100, 3, 441, 600);
    PacedRig rig(64);
    rig.play(file, { 0, file->length() });
    rig.pull(22050);
    file->failReads(1);
    rig.pull(66150);
    EXPECT_EQ(file->readErrors(), 1);
    EXPECT_EQ(gaps(rig.left, 200).size(), 1U);
    const auto first = *firstSound(rig.left) / 64 * 64;
    for (std::int64_t i = 80000; i < 80100; ++i)
        ASSERT_EQ(rig.left[static_cast<std::size_t>(first + i)], file->left(i));
}

TEST(GraphChange, TheDeviceRestsHalfAMinuteAfterTheEndAndAfterAPause)
{
    const auto file = twoTones(44100, 40, 441, 600);
    PacedRig rig(441);
    rig.play(file, { 0, 4410 });
    rig.pullSeconds(0.3);
    ASSERT_EQ(rig.completions, 1);
    rig.scheduler.advance(29.5);
    EXPECT_EQ(rig.output.suspensions, 0);
    rig.scheduler.advance(1);
    EXPECT_EQ(rig.output.suspensions, 1);

    rig.play(file, { 0, file->length() });
    EXPECT_EQ(rig.output.suspensions, 0) << "it wakes up";
    rig.pullSeconds(0.3);
    rig.scheduler.advance(31);
    EXPECT_EQ(rig.output.suspensions, 0) << "what sounds does not rest";
    rig.player->pause();
    rig.pullSeconds(0.1);
    rig.scheduler.advance(31);
    EXPECT_EQ(rig.output.suspensions, 1);
    rig.player->play();
    EXPECT_EQ(rig.output.suspensions, 0);
    rig.left.clear();
    rig.pullSeconds(0.2);
    EXPECT_TRUE(firstSound(rig.left, 0.1F));
}

TEST(GraphChange, AReadThatNeverReturnsDoesNotHoldUpTheEnd)
{
    struct StuckFile final : AudioFile {
        std::promise<void> reading, ended;
        std::shared_future<void> end = ended.get_future().share();
        [[nodiscard]] std::int64_t length() const override { return 44100; }
        [[nodiscard]] int sampleRate() const override { return 44100; }
        [[nodiscard]] int channelCount() const override { return 2; }
        [[nodiscard]] std::int64_t readErrors() const override { return 0; }
        [[nodiscard]] std::int64_t read(std::int64_t, std::span<float>) override
        {
            if (end.wait_for(std::chrono::seconds(0)) == std::future_status::timeout)
                reading.set_value();
            end.wait();
            return 0;
        }
    };
    const auto file = std::make_shared<StuckFile>();
    {
        PacedRig rig;
        rig.play(file, { 0, 44100 });
        file->reading.get_future().wait();
    }
    // The test would hang before this line.
    file->ended.set_value();
}

}  // namespace
}  // namespace quillet
