#include "tests/app/playback/EngineRig.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace quillet {
namespace {

TEST(AudioEngine, SchedulesTheFramesOfTheSegment)
{
    struct Case {
        int sampleRate;
        double from;
        double to;
        std::optional<FrameRange> expected;
    };
    const Case cases[] = {
        { 48000, 1.5, 3.25, FrameRange{ 72000, 84000 } },
        { 44100, 0, 1e-6, std::nullopt },
        { 44100, 0.99999, 2.00001, FrameRange{ 44099, 44101 } },  // both ends truncated
        { 8000, -0.0001, 0.5, FrameRange{ 0, 4000 } },  // toward zero
        { 8000, -0.5, 0.5, std::nullopt },
        { 8000, 9.9999, 20, FrameRange{ 79999, 80001 } },  // the graph cuts what lies behind the end
        { 8000, 10, 20, std::nullopt },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.sampleRate << " Hz from " << c.from << " to " << c.to);
        EngineRig rig;
        rig.engine->setAudioFile(EngineRig::file(c.sampleRate, 10));
        rig.engine->play(0, 1);
        rig.engine->play(c.from, c.to);
        EXPECT_EQ(rig.player().segment, c.expected);
        EXPECT_EQ(rig.player().isSounding, c.expected.has_value());
    }
}

TEST(AudioEngine, AnEmptySegmentOrNoFileLeavesEverythingAsItIs)
{
    EngineRig rig;
    rig.playRegion();
    for (const double to : { 2.0, 1.0, std::numeric_limits<double>::quiet_NaN() })
        rig.engine->play(2, to);
    rig.engine->setAudioFile(nullptr);
    rig.engine->play(0, 1);
    EXPECT_TRUE(rig.player().isSounding);
    EXPECT_EQ(rig.player().scheduleCount, 1);
}

TEST(AudioEngineDeathTest, ATimeWithoutAFrameNumberIsFatal)
{
    EngineRig rig;
    EXPECT_DEATH(rig.engine->play(0, std::numeric_limits<double>::infinity()), "requirement broken");
    EXPECT_DEATH(rig.engine->play(0, 2e14), "requirement broken");
}

TEST(AudioEngine, ANewSegmentReplacesTheOldOneAtOneInstant)
{
    EngineRig rig;
    rig.playRegion();
    rig.graph.batches.clear();
    rig.engine->play(5, 6);
    ASSERT_EQ(rig.graph.batches.size(), 1U);
    EXPECT_EQ(rig.graph.batches[0], (std::vector<std::string>{ "stop 0", "schedule 0", "play 0" }));
    EXPECT_EQ(rig.graph.startCount, 1);
}

TEST(AudioEngine, ReportsThePlayHeadUpToTheRegionsEndOrTheHeldWindows)
{
    struct Case {
        bool hold;
        std::optional<double> sampleTime;
        double expected;
    };
    const Case cases[] = {
        { false, std::nullopt, -1 },  // nothing sounds yet
        { false, 24000, 2.5 },       { false, 96000, 4 },  { false, 100000, 4 },  // counted on while the tail is heard
        { true, 2400, 2.05 },        { true, 4800, 2.08 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "hold " << c.hold << ", frame " << c.sampleTime.value_or(-1));
        EngineRig rig;
        rig.state->hold = c.hold;
        rig.state->holdAt = 2;
        rig.playRegion();
        rig.player().sampleTime = c.sampleTime;
        rig.scheduler.advance(0.05);
        EXPECT_DOUBLE_EQ(rig.state->position, c.expected);
    }
}

TEST(AudioEngine, ThePlayHeadRestsOncePausedOrStopped)
{
    for (const bool pauses : { true, false }) {
        EngineRig rig;
        rig.playRegion();
        rig.player().sampleTime = 4800;
        pauses ? rig.engine->pause() : rig.engine->stop();
        rig.scheduler.advance(1);
        EXPECT_EQ(rig.state->position, -1);
        EXPECT_FALSE(rig.player().isSounding);
    }
}

TEST(AudioEngine, GetsTheOutputReadyForTheFilesRateAndTheEqualiserOutOfTheWay)
{
    EngineRig rig;
    EXPECT_EQ(rig.graph.preparedRate, 48000);
    EXPECT_TRUE(rig.engine->eq().bypass());
    for (const int band : { -1, 3, 5 })
        rig.engine->setEQGain(-6.25, band);
    EXPECT_EQ(rig.engine->eq().gain(3), -6.25F);
}

}  // namespace
}  // namespace quillet
