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
        { 8000, 9.9999, 20, FrameRange{ 79999, 80001 } },  // the graph cuts what lies past the end
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
    for (void (AudioEngine::*end)() : { &AudioEngine::pause, &AudioEngine::stop }) {
        EngineRig rig;
        rig.playRegion();
        rig.player().sampleTime = 4800;
        (*rig.engine.*end)();
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

// ---- What follows an end ----

TEST(AudioEngineRepeat, ALoopWaitsForTheTailAndThePauseAtTheRegionsEnd)
{
    for (const double latency : { 0.0, 0.25 }) {
        const double tail = latency > 0 ? latency : 0.02;
        EngineRig rig;
        rig.graph.latencySeconds = latency;
        rig.state->delaySeconds = 1;
        rig.state->delayMilliseconds = 250;
        rig.playRegion();
        rig.player().sampleTime = 95000;
        rig.complete();
        rig.scheduler.advance(tail - 0.001);
        EXPECT_LT(rig.state->position, 4);
        rig.scheduler.advance(0.001);
        EXPECT_EQ(rig.state->position, 4);
        rig.scheduler.advance(1.249);
        EXPECT_EQ(rig.state->position, 4);
        EXPECT_EQ(rig.player().scheduleCount, 1);
        rig.scheduler.advance(0.001);
        EXPECT_EQ(rig.player().scheduleCount, 2);
        EXPECT_EQ(rig.player().segment, EngineRig::frames(2, 4));
        EXPECT_TRUE(rig.state->isPlaying);
    }
}

TEST(AudioEngineRepeat, ALoopAndAHeldWindowGoOnAfterTheTailOnceForEachEnd)
{
    for (const bool holds : { false, true }) {
        EngineRig rig;
        rig.state->hold = holds;
        rig.state->holdAt = 5;
        // A held window knows no pause, and repeats whatever the loop says.
        rig.state->loop = !holds;
        rig.state->delaySeconds = holds ? 3 : 0;
        const double start = holds ? 5 : 2;
        const double end = holds ? 5 + 0.08 : 4;
        rig.engine->play(start, end);
        for (int pass = 2; pass < 6; ++pass) {
            rig.complete();
            rig.scheduler.advance(0.01);
            rig.complete();
            rig.player().completions.front()();
            EXPECT_EQ(rig.player().scheduleCount, pass - 1);
            rig.scheduler.advance(0.01);
            EXPECT_EQ(rig.player().scheduleCount, pass);
            EXPECT_EQ(rig.player().segment, EngineRig::frames(start, end));
            EXPECT_EQ(rig.player().isHeld, holds);
            rig.scheduler.advance(0.03);
            EXPECT_EQ(rig.player().scheduleCount, pass);
        }
        rig.engine->play(5, 6);
        EXPECT_FALSE(rig.player().isHeld);
    }
}

TEST(AudioEngineRepeat, WithoutLoopTheTransportRestsAtTheRegionsStart)
{
    EngineRig rig;
    rig.state->loop = false;
    rig.playRegion();
    rig.player().sampleTime = 96000;
    rig.complete();
    rig.scheduler.advance(0.019);
    EXPECT_TRUE(rig.state->isPlaying);
    rig.scheduler.advance(5);
    EXPECT_FALSE(rig.state->isPlaying);
    EXPECT_EQ(rig.state->position, 2);
    EXPECT_EQ(rig.player().scheduleCount, 1);
}

TEST(AudioEngineRepeat, EditsDuringThePauseAreHeardOnePassLater)
{
    EngineRig rig;
    rig.state->delayMilliseconds = 500;
    rig.playRegion();
    rig.complete();
    rig.state->start = 6;
    rig.state->end = 7;
    rig.state->delayMilliseconds = 0;
    rig.state->loop = false;
    rig.scheduler.advance(0.02);
    EXPECT_EQ(rig.state->position, 4);
    rig.scheduler.advance(0.499);
    EXPECT_EQ(rig.player().scheduleCount, 1);
    rig.scheduler.advance(0.001);
    EXPECT_EQ(rig.player().segment, EngineRig::frames(2, 4));

    rig.state->loop = true;
    rig.complete();
    rig.scheduler.advance(0.02);
    EXPECT_EQ(rig.player().segment, EngineRig::frames(6, 7));
}

TEST(AudioEngineRepeat, WhatWaitsIsCalledOff)
{
    struct Case {
        const char* by;
        void (*action)(EngineRig&);
        int expectedSchedules;
    };
    const Case cases[] = {
        { "stop", [](EngineRig& rig) { rig.engine->stop(); }, 1 },
        { "pause", [](EngineRig& rig) { rig.engine->pause(); }, 1 },
        { "another segment", [](EngineRig& rig) { rig.engine->play(5, 6); }, 2 },
        { "the end of the engine", [](EngineRig& rig) { rig.engine.reset(); }, 1 },
    };
    for (const Case& c : cases) {
        for (const double waited : { 0.0, 0.01, 0.5 }) {
            SCOPED_TRACE(testing::Message() << c.by << " after " << waited);
            EngineRig rig;
            rig.state->delaySeconds = 1;
            rig.playRegion();
            rig.complete();
            rig.scheduler.advance(waited);
            const double position = rig.state->position;
            c.action(rig);
            rig.scheduler.advance(3);
            EXPECT_EQ(rig.player().scheduleCount, c.expectedSchedules);
            EXPECT_EQ(rig.state->position, position);
        }
    }
}

TEST(AudioEngineRepeat, AnEndThatComesTooLateIsIgnored)
{
    EngineRig rig;
    rig.playRegion();
    const auto firstEnd = rig.player().completions.front();
    rig.engine->play(5, 6);
    firstEnd();
    rig.scheduler.advance(1);
    EXPECT_EQ(rig.player().segment, EngineRig::frames(5, 6));

    const auto secondEnd = rig.player().completions.back();
    rig.engine->stop();
    secondEnd();
    rig.scheduler.advance(1);
    EXPECT_EQ(rig.player().scheduleCount, 2);

    rig.playRegion();
    rig.engine->pause();
    rig.complete();
    rig.scheduler.advance(1);
    EXPECT_EQ(rig.player().scheduleCount, 3);

    rig.playRegion();
    const auto lastEnd = rig.player().completions.back();
    rig.state.reset();
    lastEnd();
    rig.scheduler.advance(1);
    EXPECT_EQ(rig.player().scheduleCount, 4);

    rig.engine.reset();
    lastEnd();
}

PassPlan planOf(FrameRange segment, double pauseSeconds, bool held)
{
    PlannedPass pass;
    pass.segment = segment;
    pass.pauseSeconds = pauseSeconds;
    pass.held = held;
    pass.times = PlannedPass::endless;
    return { { pass }, std::nullopt };
}

TEST(AudioEngineRepeat, TellsTheGraphWhatFollowsAndKeepsItUpToDate)
{
    struct Case {
        const char* name;
        void (*change)(PlainPlaybackState&);
        PassPlan expected;
    };
    const Case cases[] = {
        { "loop", [](PlainPlaybackState&) {}, planOf(EngineRig::frames(2, 4), 0, false) },
        { "moved region", [](PlainPlaybackState& state) { state.start = 3; }, planOf(EngineRig::frames(3, 4), 0, false) },
        { "empty region", [](PlainPlaybackState& state) { state.end = 2; }, {} },
        { "pause", [](PlainPlaybackState& state) { state.delaySeconds = 1, state.delayMilliseconds = 250; },
          planOf(EngineRig::frames(2, 4), 1.25, false) },
        { "no loop", [](PlainPlaybackState& state) { state.loop = false; }, {} },
        { "hold",
          [](PlainPlaybackState& state) {
              state.hold = true;
              state.holdAt = 5;
              state.loop = false;
              state.delaySeconds = 1;
          },
          planOf(EngineRig::frames(5, 5.08), 0, true) },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EngineRig before;
        c.change(*before.state);
        before.engine->play(1, 2);
        EXPECT_EQ(before.player().plan, c.expected);

        EngineRig meanwhile;
        meanwhile.engine->play(1, 2);
        c.change(*meanwhile.state);
        meanwhile.engine->nextSegmentDidChange();
        EXPECT_EQ(meanwhile.player().plan, c.expected);

        // After the end it is settled what follows, and it may sound already.
        EngineRig ended;
        ended.engine->play(1, 2);
        ended.complete();
        c.change(*ended.state);
        ended.engine->nextSegmentDidChange();
        EXPECT_EQ(ended.player().plan, planOf(EngineRig::frames(2, 4), 0, false));
    }
}

TEST(AudioEngineRepeat, EndsAfterThePassesWantedHoweverLateItHearsOfThem)
{
    for (const std::int64_t heardOf : { 3, 5 }) {
        SCOPED_TRACE(heardOf);
        EngineRig rig;
        rig.engine->setPassLimit(5);
        rig.playRegion();
        EXPECT_EQ(rig.player().plan.passLimit, 5);
        rig.player().passesEnded = heardOf;
        rig.complete();
        EXPECT_EQ(rig.state->ends, heardOf == 5 ? 1 : 0);
        // The last one ends before this thread is back.
        rig.player().passesEnded = 5;
        rig.scheduler.advance(1);
        EXPECT_EQ(rig.player().scheduleCount, 1);
        EXPECT_EQ(rig.state->ends, 1);
        EXPECT_FALSE(rig.state->isPlaying);
        EXPECT_FALSE(rig.player().isSounding);
    }
}

}  // namespace
}  // namespace quillet
