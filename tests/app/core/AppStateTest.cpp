#include "app/core/AppState.h"

#include "app/core/RegionMarks.h"
#include "tests/support/StateRig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace quillet {
namespace {

struct AppStateTest : testing::Test, StateRig {
    [[nodiscard]] std::optional<FileSettings> saved() const { return settings.load(song); }
};

using Window = std::pair<double, double>;

// ---- Settings ----

TEST_F(AppStateTest, BurstSavesOnceWithTheLastValue)
{
    for (int i = 0; i < 10; ++i) {
        state->setSpeed(50 + i);
        scheduler.advance(0.2);
        EXPECT_FALSE(saved());
    }
    state->setRegion({ 3, 10 });
    scheduler.advance(0.299);
    EXPECT_FALSE(saved());
    scheduler.advance(0.001);
    ASSERT_TRUE(saved());
    EXPECT_EQ(saved()->speed, 59);
    EXPECT_EQ(saved()->regionStart, 3);

    SettingsStore(defaults).clearAll();
    scheduler.advance(5);
    EXPECT_FALSE(saved());
}

TEST_F(AppStateTest, EverySetOfAPreferenceSavesAndNoSetOfAnythingElse)
{
    struct Case {
        const char* name;
        void (*set)(AppState&);
        bool saves;
    };
    const Case cases[] = {
        { "speed", [](AppState& s) { s.setSpeed(s.speed()); }, true },
        { "speed step", [](AppState& s) { s.setSpeedStep(s.speedStep()); }, true },
        { "pitch", [](AppState& s) { s.setPitch(s.pitch()); }, true },
        { "equaliser", [](AppState& s) { s.setEqEnabled(s.eqEnabled()); }, true },
        { "gains", [](AppState& s) { s.setEqGains(s.eqGains()); }, true },
        { "loop", [](AppState& s) { s.setLoopEnabled(s.loopEnabled()); }, true },
        { "delay", [](AppState& s) { s.setLoopDelaySeconds(s.loopDelaySeconds()); }, true },
        { "delay fraction", [](AppState& s) { s.setLoopDelayMilliseconds(s.loopDelayMilliseconds()); }, true },
        { "region", [](AppState& s) { s.setRegion(s.region()); }, true },
        { "play head and hold", [](AppState& s) { s.setPlaybackPosition(1), s.toggleHold(), s.stepHoldForward(); }, false },
        { "zoom", [](AppState& s) { s.setZoomLevel(2), s.setPanOffset(1); }, false },
        { "reset", [](AppState& s) { s.resetToDefaults(s.audioDuration()); }, true },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        settings.clearAll();
        c.set(*state);
        scheduler.advance(0.3);
        EXPECT_EQ(saved().has_value(), c.saves);
    }
}

TEST_F(AppStateTest, TheSaveBelongsToTheFileOfTheLastChange)
{
    state->setSpeed(70);
    state->setAudioFileURL("/music/other.flac");
    scheduler.advance(0.3);
    EXPECT_EQ(saved().value_or(FileSettings{}).speed, 70);
    EXPECT_FALSE(settings.load("/music/other.flac"));

    state->setSpeed(80);
    scheduler.advance(0.3);
    EXPECT_EQ(settings.load("/music/other.flac").value_or(FileSettings{}).speed, 80);
    EXPECT_EQ(saved()->speed, 70);
}

TEST_F(AppStateTest, NothingIsSavedWithoutAFileOrAfterTheStatesEnd)
{
    state->setAudioFileURL(std::nullopt);
    state->setSpeed(70);
    scheduler.advance(1);
    state->setAudioFileURL(song);
    scheduler.advance(1);
    EXPECT_TRUE(defaults.keysWithPrefix("settings.").empty());

    state->setSpeed(80);
    state.reset();
    scheduler.advance(1);
    EXPECT_TRUE(defaults.keysWithPrefix("settings.").empty());
}

TEST_F(AppStateTest, SettingsApplyAsTheyAreAndResetBringsTheDefaultsBack)
{
    const FileSettings kept{ 1, 2, 55, 7, -300, true, { 1, -2, 3 }, false, 4, 5 };
    state->applySettings(kept);
    EXPECT_EQ(state->currentSettings(), kept);

    state->setZoomLevel(3);
    state->setPanOffset(4);
    state->setStemSession(StemSession{});
    state->toggleHold();
    state->resetToDefaults(10);
    EXPECT_EQ(state->currentSettings(), (FileSettings{ 0, 10, 100, 5, 0, false, { 0, 0, 0, 0, 0 }, true, 0, 0 }));
    EXPECT_EQ(state->zoomLevel(), 1);
    EXPECT_EQ(state->panOffset(), 0);
    EXPECT_EQ(state->playbackPosition(), 0);
    EXPECT_EQ(state->holdPosition(), 0);
    EXPECT_FALSE(state->isPlaying() || state->holdEnabled() || state->stemSession());
}

// ---- Transport ----

TEST_F(AppStateTest, PlayStartsAtTheRegionsStartEveryTime)
{
    state->setRegion({ 2, 4 });
    for (int start = 1; start < 4; ++start) {
        state->togglePlayPause();
        EXPECT_TRUE(state->isPlaying());
        EXPECT_EQ(state->playbackPosition(), 2);
        EXPECT_EQ(sounding(), Window(2, 4));
        EXPECT_EQ(starts(), start);
        graph.players.front()->sampleTime = 8000;
        scheduler.advance(0.05);
        EXPECT_EQ(state->playbackPosition(), 3);
        state->togglePlayPause();
        EXPECT_FALSE(state->isPlaying() || sounding());
        EXPECT_TRUE(graph.players.front()->segment);
        EXPECT_EQ(state->playbackPosition(), 3);
    }
    state->setRegion({ 2, 2 });
    state->togglePlayPause();
    EXPECT_FALSE(state->isPlaying() || sounding());
}

TEST_F(AppStateTest, ASeekStaysInTheRegionAndTheLoopGoesOn)
{
    state->setRegion({ 2, 4 });
    state->togglePlayPause();
    state->seek(3);
    EXPECT_EQ(sounding(), Window(3, 4));
    EXPECT_EQ(state->playbackPosition(), 3);
    ASSERT_EQ(graph.players.front()->plan.passes.size(), 1);
    EXPECT_EQ(graph.players.front()->plan.passes[0].segment, (FrameRange{ 16000, 16000 }));
    const int before = starts();
    for (const double nowhere : { 1.99, 4.0, 1e99, -1e99, std::nan("") })
        state->seek(nowhere);
    EXPECT_EQ(starts(), before);
    // Where no whole frame is left, the next pass begins.
    state->setRegion({ 2, 4.00005 });
    state->seek(4.00001);
    EXPECT_EQ(sounding(), Window(2, 4));

    // While nothing plays it chooses where the next start is, and that one alone.
    state->togglePlayPause();
    state->seek(3.5);
    EXPECT_FALSE(sounding());
    for (const Window& expected : { Window(3.5, 4), Window(2, 4) }) {
        state->togglePlayPause();
        EXPECT_EQ(sounding(), expected);
        state->togglePlayPause();
    }
    // What moves the play head, or the region away from it, takes the choice back.
    state->seek(3.5);
    state->stopReset();
    state->togglePlayPause();
    EXPECT_EQ(sounding(), Window(2, 4));
    state->togglePlayPause();
    state->seek(3.5);
    state->setRegion({ 1, 3 });
    state->togglePlayPause();
    EXPECT_EQ(sounding(), Window(1, 3));

    state->toggleHold();
    const auto held = sounding();
    state->seek(2);
    EXPECT_EQ(sounding(), held);
}

TEST_F(AppStateTest, HoldTakesThePlayHeadsPlaceWithinTheFile)
{
    struct Case {
        double duration;
        bool isPlaying;
        double playHead;
        double expected;
    };
    const Case cases[] = {
        { 10, false, 3, 1 },  // the region's start
        { 10, true, 3, 3 },       { 10, true, 9.95, 10 - 0.08 },
        { 10, true, 9.92, 9.92 }, { 0.05, true, 0.04, 0 },  // shorter than the window
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.duration << " s, playing " << c.isPlaying << " at " << c.playHead);
        open(c.duration);
        state->setRegion({ 1, c.duration });
        state->setIsPlaying(c.isPlaying);
        state->setPlaybackPosition(c.playHead);
        state->toggleHold();
        EXPECT_EQ(state->holdPosition(), c.expected);
        EXPECT_TRUE(state->holdEnabled() && state->isPlaying());
        EXPECT_EQ(graph.players.front()->segment->start, static_cast<std::int64_t>(8000 * c.expected));
        EXPECT_EQ(graph.players.front()->plan.passes.front().segment, graph.players.front()->segment);
        EXPECT_TRUE(graph.players.front()->isHeld);

        state->toggleHold();
        EXPECT_FALSE(state->holdEnabled() || state->isPlaying() || sounding());
        EXPECT_EQ(state->playbackPosition(), 1);
    }
}

TEST_F(AppStateTest, StepsMoveTheHeldWindowThroughTheWholeFile)
{
    struct Case {
        double duration;
        double from;
        double expectedBackward;
        double expectedForward;
    };
    const Case cases[] = {
        { 10, 5, 5 - 0.08, 5 + 0.08 },
        { 10, 0.05, 0, 0.05 + 0.08 },
        { 10, 9.9, 9.9 - 0.08, 10 - 0.08 },
        { 0.05, 0, 0, 0 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.from << " of " << c.duration << " s");
        open(c.duration);
        const int before = starts();
        state->stepHoldForward();
        state->stepHoldBackward();
        EXPECT_EQ(state->holdPosition(), 0);
        EXPECT_EQ(starts(), before);

        state->setHoldEnabled(true);
        state->setHoldPosition(c.from);
        state->stepHoldBackward();
        EXPECT_EQ(state->holdPosition(), c.expectedBackward);
        state->setHoldPosition(c.from);
        state->stepHoldForward();
        EXPECT_EQ(state->holdPosition(), c.expectedForward);
        EXPECT_EQ(starts(), before + 2);
        EXPECT_TRUE(sounding());
        EXPECT_FALSE(state->isPlaying());
    }
}

TEST_F(AppStateTest, AStepSoundsWhileHoldIsPausedAndPlayResumesThere)
{
    state->setRegion({ 5, 10 });
    state->toggleHold();
    state->togglePlayPause();
    EXPECT_TRUE(state->holdEnabled());
    EXPECT_FALSE(state->isPlaying() || sounding());

    state->stepHoldForward();
    EXPECT_TRUE(sounding());
    EXPECT_FALSE(state->isPlaying());
    const int before = starts();
    state->togglePlayPause();
    EXPECT_TRUE(state->isPlaying());
    EXPECT_EQ(starts(), before + 1);
    EXPECT_EQ(graph.players.front()->segment->start, static_cast<std::int64_t>(8000 * (5 + 0.08)));
}

TEST_F(AppStateTest, TheTransportSaysWhatIsHeard)
{
    // A region without sound in it ends the playing, at once when the edit is over and else where the pass ends.
    for (const bool isOver : { true, false }) {
        for (const TimeRange& silent : { TimeRange{ 3, 3 }, TimeRange{ 3, 3.00001 } }) {
            state->setRegion({ 1, 2 });
            state->togglePlayPause();
            ASSERT_TRUE(sounding());
            state->setRegion(silent);
            EXPECT_TRUE(state->isPlaying());
            if (isOver)
                state->restartRegion();
            else
                FakeAudioGraph::complete(*graph.players.front());
            scheduler.advance(1);
            EXPECT_FALSE(state->isPlaying() || sounding());
            EXPECT_EQ(state->playbackPosition(), 3);
            state->togglePlayPause();
            EXPECT_FALSE(state->isPlaying() || sounding());
        }
    }
    // What is held sounds on while the region changes.
    state->setRegion({ 1, 2 });
    state->toggleHold();
    const int before = starts();
    state->setRegion({ 4, 5 });
    state->restartRegion();
    EXPECT_EQ(starts(), before);
    EXPECT_EQ(sounding(), Window(1, 1.08));
    state->toggleHold();

    // Stems begin and end in silence.
    const auto file = std::make_shared<MemoryAudioFile>(sampleRate, std::vector<float>(std::size_t{ 20 } * sampleRate));
    state->togglePlayPause();
    state->enterStemMode({}, { { { "vocals", "/vocals.wav", false }, file } });
    EXPECT_FALSE(state->isPlaying() || sounding());
    state->togglePlayPause();
    EXPECT_TRUE(graph.players.back()->isSounding);
    state->exitStemMode();
    EXPECT_FALSE(state->isPlaying() || engine.isInStemMode());
}

TEST_F(AppStateTest, AnEditWhilePlayingChangesWhatFollows)
{
    state->togglePlayPause();
    const auto& passes = graph.players.front()->plan.passes;
    const auto follows = [&passes](FrameRange segment, double pauseSeconds) {
        return passes.size() == 1 && passes[0].segment == segment && passes[0].pauseSeconds == pauseSeconds;
    };
    EXPECT_TRUE(follows({ 0, 80000 }, 0));
    state->setRegion({ 1, 2 });
    EXPECT_TRUE(follows({ 8000, 8000 }, 0));
    state->setLoopDelaySeconds(1);
    EXPECT_TRUE(follows({ 8000, 8000 }, 1));
    state->setLoopDelayMilliseconds(250);
    EXPECT_TRUE(follows({ 8000, 8000 }, 1.25));
    state->setLoopEnabled(false);
    EXPECT_TRUE(passes.empty());
    state->setHoldEnabled(true);
    state->setHoldPosition(4);
    EXPECT_TRUE(follows({ 32000, 640 }, 0) && passes[0].held);
}

}  // namespace
}  // namespace quillet
