#include "app/core/AppState.h"

#include "app/core/RegionMarks.h"
#include "tests/support/StateRig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace quillet {
namespace {

using Window = std::pair<double, double>;
struct MarksTest : testing::Test, StateRig { };

// ---- Marks ----

TEST_F(MarksTest, MarksAreSetWhereItIsHeardAndLeaveARegion)
{
    struct Case {
        const char* what;
        TimeRange region;
        /// Of the play head within the region, or of the held window.
        double place;
        bool isHeld;
        TimeRange start, end;
    };
    const Case cases[] = {
        { "inside", { 2, 6 }, 3, false, { 3, 6 }, { 2, 3 } },
        { "held inside", { 2, 6 }, 3, true, { 3, 6 }, { 2, 3.08 } },
        { "held after it", { 2, 6 }, 8, true, { 8, 10 }, { 2, 8.08 } },
        { "held before it", { 2, 6 }, 1, true, { 1, 6 }, { 0, 1.08 } },
        { "held at the file's end", { 2, 6 }, 9.92, true, { 9.92, 10 }, { 2, 10 } },
        { "at its start", { 0, 6 }, 0, false, { 0, 6 }, { 0, 0.01 } },
    };
    for (const Case& c : cases)
        for (const bool isStart : { true, false }) {
            SCOPED_TRACE(testing::Message() << c.what << (isStart ? ", start" : ", end"));
            state->stopReset();
            state->setHoldEnabled(c.isHeld);
            state->setHoldPosition(c.place);
            state->setRegion(c.region);
            state->togglePlayPause();
            graph.players.front()->sampleTime = (c.place - c.region.start) * sampleRate;
            const int before = starts();
            (isStart ? RegionMarks::markStart : RegionMarks::markEnd)(*state);
            const TimeRange& expected = isStart ? c.start : c.end;
            EXPECT_NEAR(state->regionStart(), expected.start, 1e-9);
            EXPECT_NEAR(state->regionEnd(), expected.end, 1e-9);
            // The end is heard at once, by playing what it belongs to; the rest goes on.
            EXPECT_EQ(starts() - before, !isStart && !c.isHeld ? 1 : 0);
            EXPECT_TRUE(state->isPlaying());
            state->setHoldEnabled(false);
        }
    // The next pass is heard already, and nobody has said so yet.
    state->setRegion({ 2, 4 });
    state->stopReset();
    state->togglePlayPause();
    graph.players.front()->sampleTime = 2.5 * sampleRate;
    RegionMarks::markStart(*state);
    EXPECT_DOUBLE_EQ(state->regionStart(), 2.5);
}

TEST_F(MarksTest, NudgesAndMovesStayInTheFileAndTheSoundGoesOn)
{
    state->setRegion({ 2, 4 });
    state->togglePlayPause();
    const int before = starts();
    RegionMarks::nudgeStart(*state, -0.01);
    RegionMarks::nudgeEnd(*state, 0.01);
    EXPECT_EQ(state->region(), (TimeRange{ 1.99, 4.01 }));
    EXPECT_EQ(sounding(), Window(2, 4.01)) << "what plays ends where the region does now";
    RegionMarks::selectAll(*state);
    EXPECT_EQ(sounding(), Window(2, 10));
    EXPECT_EQ(starts(), before);

    state->setRegion({ 4, 7 });
    RegionMarks::moveByItsLength(*state, 1);
    EXPECT_EQ(state->region(), (TimeRange{ 7, 10 }));
    EXPECT_EQ(sounding(), Window(7, 10));
    RegionMarks::moveByItsLength(*state, 1);
    for (int i = 0; i < 4; ++i)
        RegionMarks::moveByItsLength(*state, -1);
    EXPECT_EQ(state->region(), (TimeRange{ 0, 3 }));
    state->setRegion({ 0, 0.015 });
    for (int i = 0; i < 3; ++i)
        RegionMarks::nudgeStart(*state, 0.01);
    EXPECT_NEAR(state->regionStart(), 0.005, 1e-9);
}

// ---- Steps back and forth ----

struct HistoryTest : MarksTest {
    HistoryTest()
    {
        state->setLoadingState(LoadingState::loaded());
        state->setSpeed(100);
    }
};

TEST_F(HistoryTest, APressOfTheMouseIsOneStepAndSoAreEditsThatFollowCloselyOfOneKind)
{
    state->beginGesture();
    for (int i = 1; i < 50; ++i) {
        state->setRegion({ i * 0.1, 9 });
        scheduler.advance(1);
    }
    state->endGesture();
    for (int i = 0; i < 5; ++i) {
        state->adjustSpeed(-5);
        scheduler.advance(0.3);
    }
    scheduler.advance(1);
    state->adjustSpeed(-5);
    state->setPitch(100);
    state->setEqEnabled(true);
    state->setEqGain(2, 6);
    // Where it ends as it began, a drag is no step.
    state->beginGesture();
    state->setRegion({ 1, 2 });
    state->setRegion({ 4.9, 9 });
    state->endGesture();

    state->togglePlayPause();
    const int before = starts();
    state->undo();
    EXPECT_FALSE(state->eqEnabled());
    state->undo();
    EXPECT_EQ(state->pitch(), 0);
    state->undo();
    EXPECT_EQ(state->speed(), 75);
    EXPECT_EQ(state->undoable(), EditKind::speed);
    state->undo();
    EXPECT_EQ(state->speed(), 100);
    EXPECT_EQ(starts(), before) << "the sound goes on";
    state->undo();
    EXPECT_EQ(state->region(), (TimeRange{ 0, 10 }));
    EXPECT_EQ(sounding(), Window(0, 10));
    EXPECT_FALSE(state->undoable());
    state->undo();

    for (int i = 0; i < 9; ++i)
        state->redo();
    EXPECT_EQ(state->region(), (TimeRange{ 4.9, 9 }));
    EXPECT_EQ(state->speed(), 70);
    EXPECT_EQ(state->pitch(), 100);
    EXPECT_EQ(state->eqGains()[2], 6);
    EXPECT_FALSE(state->redoable());

    // Another edit, and what was undone is gone.
    state->undo();
    state->setPitch(-7);
    EXPECT_FALSE(state->redoable());
    scheduler.advance(1);
    EXPECT_EQ(settings.load(song).value_or(FileSettings{}).pitch, -7);
}

TEST_F(HistoryTest, StemsGoBackTooAndAnotherSongHasNothingToUndo)
{
    const auto file = std::make_shared<MemoryAudioFile>(sampleRate, std::vector<float>(std::size_t{ 20 } * sampleRate));
    const StemSession session{ { { "vocals", "/vocals.wav", false }, { "drums", "/drums.wav", false } } };
    state->setPitch(5);
    state->enterStemMode(session, { { session.stems[0], file }, { session.stems[1], file } },
                         { { { "drums", { 0.7, false } } } });
    EXPECT_EQ(state->undoable(), EditKind::pitch) << "that is no edit";
    state->undo();
    EXPECT_EQ(state->stemMix().channel("drums").volume, 0.7) << "of a time without stems nothing comes back";
    state->setStemMuted("drums", true);
    scheduler.advance(1);
    state->setStemVolume("vocals", 0.5);
    state->setStemVolume("vocals", 0.4);
    state->undo();
    EXPECT_EQ(state->stemMix().channel("vocals").volume, 1);
    EXPECT_EQ(graph.mixers[1]->volume, 1);
    EXPECT_TRUE(state->stem("drums")->isMuted);
    state->undo();
    EXPECT_FALSE(state->stem("drums")->isMuted);
    EXPECT_EQ(graph.mixers[2]->volume, 0.7);

    for (int i = 0; i < 300; ++i) {
        state->setPitch(i + 1);
        state->setSpeed(50 + i);
    }
    int steps = 0;
    for (; state->undoable(); ++steps)
        state->undo();
    EXPECT_EQ(steps, static_cast<int>(EditHistory::maxSteps));
    state->redo();
    state->beginOpening("/music/other.flac");
    EXPECT_FALSE(state->undoable() || state->redoable());
}

// ---- Trainer, loops ----

struct PracticeTest : HistoryTest {
    struct Ahead {
        double start, speed;
        std::int64_t times;
        bool operator==(const Ahead&) const = default;
    };
    static constexpr std::int64_t endless = PlannedPass::endless;

    /// What follows by the graph's plan; 0 for the speed that is set.
    [[nodiscard]] std::vector<Ahead> ahead(std::size_t most = 9) const
    {
        std::vector<Ahead> seen;
        for (const PlannedPass& pass : graph.players.front()->plan.passes)
            if (seen.size() < most)
                seen.push_back({ static_cast<double>(pass.segment.start) / sampleRate,
                                 std::round(pass.rate.value_or(0) * 1000) / 10, pass.times });
        return seen;
    }
    void endPass()
    {
        FakeAudioGraph::complete(*graph.players.front());
        scheduler.advance(0.05);
    }
};

TEST_F(PracticeTest, TheTrainerGoesFromSpeedToSpeedAtTheJointsAndPausesAtAHandsTouch)
{
    state->setLoopEnabled(false);
    state->setTrainer({ .fromSpeed = 60, .goalSpeed = 72, .stepSize = 5, .passesPerStep = 2, .atGoal = Trainer::AtGoal::stay });
    state->startTrainer();
    EXPECT_EQ(state->speed(), 60);
    state->togglePlayPause();
    EXPECT_EQ(ahead(), (std::vector<Ahead>{ { 0, 60, 1 }, { 0, 65, 2 }, { 0, 70, 2 }, { 0, 72, endless } }));
    for (const double expected : { 60, 65, 65, 70 }) {
        endPass();
        EXPECT_EQ(state->speed(), expected);
        EXPECT_EQ(graph.timePitch().rate(), expected / 100);
    }
    EXPECT_EQ(state->trainerPass(), 4);
    // The main thread was late: three passes have ended.
    graph.players.front()->passesEnded = 3;
    endPass();
    EXPECT_EQ(state->trainerPass(), 7);
    EXPECT_EQ(state->speed(), 72);
    EXPECT_EQ(ahead(), (std::vector<Ahead>{ { 0, 72, endless } }));
    EXPECT_EQ(state->undoable(), EditKind::speed) << "the trainer's steps are no edits";

    state->setSpeed(80);
    EXPECT_EQ(state->trainerState(), TrainerState::paused);
    EXPECT_EQ(ahead(), (std::vector<Ahead>{ { 0, 0, endless } }));
    endPass();
    EXPECT_EQ(state->speed(), 80);
    state->resumeTrainer();
    EXPECT_EQ(ahead(), (std::vector<Ahead>{ { 0, 72, endless } }));
    state->stopReset();
    EXPECT_EQ(state->speed(), 60);
    EXPECT_EQ(state->trainerPass(), 0);

    for (const auto atGoal : { Trainer::AtGoal::stop, Trainer::AtGoal::startOver }) {
        state->setTrainer({ .fromSpeed = 100, .goalSpeed = 90, .stepSize = 20, .passesPerStep = 1, .atGoal = atGoal });
        state->startTrainer();
        state->togglePlayPause();
        endPass();
        EXPECT_EQ(state->speed(), 90);
        EXPECT_EQ(ahead(2).size(), atGoal == Trainer::AtGoal::stop ? 0U : 2U);
        endPass();
        EXPECT_EQ(state->speed(), 100) << "it has begun again, or is ready to";
        EXPECT_EQ(state->isPlaying(), atGoal == Trainer::AtGoal::startOver);
        state->stopReset();
    }
}

TEST_F(PracticeTest, ALoopIsKeptWithItsSpeedPitchAndTrainerAndComesAtTheJoint)
{
    state->setRegion({ 1, 2 });
    state->setSpeed(70);
    state->setPitch(-100);
    ASSERT_EQ(state->saveLoop(), 0U);
    EXPECT_EQ(state->loops()[0].name, "Loop 1");
    state->setRegion({ 4, 6 });
    state->setTrainer({ .fromSpeed = 50, .goalSpeed = 60, .stepSize = 10, .passesPerStep = 1 });
    state->startTrainer();
    ASSERT_EQ(state->saveLoop(), 1U);
    state->stopTrainer();
    state->setSpeed(100);
    state->setPitch(0);
    EXPECT_EQ(practices.load(song), Practice());
    scheduler.advance(0.3);
    EXPECT_EQ(practices.load(song), state->practice());

    state->togglePlayPause();
    const int before = starts();
    state->callLoop(0, AppState::CallUp::atJoint);
    EXPECT_EQ(state->waitingLoop(), 0U);
    EXPECT_EQ(ahead(), (std::vector<Ahead>{ { 1, 70, endless } }));
    EXPECT_EQ(sounding(), Window(4, 6)) << "until its end";
    EXPECT_EQ(starts(), before);
    state->callLoop(0, AppState::CallUp::atJoint);
    EXPECT_EQ(ahead(), (std::vector<Ahead>{ { 4, 0, endless } })) << "called off";
    state->callLoop(0, AppState::CallUp::atJoint);
    endPass();
    EXPECT_EQ(sounding(), Window(1, 2));
    EXPECT_EQ(state->region(), (TimeRange{ 1, 2 }));
    EXPECT_EQ(state->speed(), 70);
    EXPECT_EQ(state->pitch(), -100);
    EXPECT_EQ(state->presentLoop(), 0U);
    EXPECT_FALSE(state->waitingLoop());

    state->callLoop(1, AppState::CallUp::atJoint);
    EXPECT_EQ(ahead(), (std::vector<Ahead>{ { 4, 50, 1 }, { 4, 60, endless } }));
    endPass();
    EXPECT_EQ(state->trainerState(), TrainerState::on);
    EXPECT_EQ(state->speed(), 50);
    endPass();
    EXPECT_EQ(state->speed(), 60);
    state->callLoop(0, AppState::CallUp::atOnce);
    EXPECT_EQ(sounding(), Window(1, 2));
    EXPECT_EQ(state->trainerState(), TrainerState::off);
    state->undo();
    EXPECT_EQ(state->region(), (TimeRange{ 4, 6 }));
    EXPECT_EQ(sounding(), Window(4, 6));

    state->callLoop(1, AppState::CallUp::atJoint);
    state->removeLoop(1);
    EXPECT_FALSE(state->waitingLoop());
    state->undo();
    EXPECT_EQ(state->loops().size(), 2U);
    state->callLoop(0, AppState::CallUp::atJoint);
    state->moveLoop(0, 1);
    EXPECT_EQ(state->loops()[1].region, (TimeRange{ 1, 2 }));
    EXPECT_EQ(state->waitingLoop(), 1U) << "it waits wherever it goes";
    EXPECT_EQ(ahead(), (std::vector<Ahead>{ { 1, 70, endless } }));
    state->undo();
    EXPECT_EQ(state->waitingLoop(), 0U);
    endPass();
    EXPECT_EQ(sounding(), Window(1, 2));

    state->callLoop(1, AppState::CallUp::atJoint);
    state->setRegion({ 1, 3 });
    EXPECT_FALSE(state->waitingLoop()) << "whoever chooses another region wants that one";
    EXPECT_EQ(ahead(), (std::vector<Ahead>{ { 1, 0, endless } }));

    state->callLoop(1, AppState::CallUp::atOnce);
    state->setRegion({ 0, 9 });
    state->undo();
    EXPECT_EQ(state->region(), (TimeRange{ 4, 6 })) << "a loop that is called up is a step of its own";
}

TEST_F(PracticeTest, TheListPlaysEachLoopSoOftenAndBeginsAgain)
{
    state->setLoops({ { .name = "a", .region = { 1, 2 }, .speed = 50, .times = 2 },
                      { .name = "b", .region = { 3, 4 }, .speed = 80, .times = 1 } });
    state->playLoopList();
    EXPECT_EQ(sounding(), Window(1, 2));
    EXPECT_EQ(state->speed(), 50);
    EXPECT_EQ(ahead(3), (std::vector<Ahead>{ { 1, 50, 1 }, { 3, 80, 1 }, { 1, 50, 2 } }));
    state->setSpeed(55);
    EXPECT_EQ(ahead(2), (std::vector<Ahead>{ { 1, 55, 1 }, { 3, 80, 1 } })) << "by hand, until another loop begins";
    endPass();
    EXPECT_EQ(state->speed(), 55);
    endPass();
    EXPECT_EQ(sounding(), Window(3, 4));
    EXPECT_EQ(state->listPlace(), (ListPlace{ 1, 0 }));
    endPass();
    EXPECT_EQ(state->region(), (TimeRange{ 1, 2 }));
    state->callLoop(1, AppState::CallUp::atJoint);
    EXPECT_EQ(ahead(2), (std::vector<Ahead>{ { 3, 80, 1 }, { 1, 50, 2 } }));
    endPass();
    EXPECT_EQ(state->listPlace(), (ListPlace{ 1, 0 }));
    state->setRegion({ 3, 5 });
    EXPECT_FALSE(state->listPlace()) << "another region is the end of the list";
    EXPECT_EQ(ahead(), (std::vector<Ahead>{ { 3, 0, endless } }));
}

}  // namespace
}  // namespace quillet
