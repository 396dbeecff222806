// The engine over the graph that really sounds, while the main thread is late: what is heard is what the state said in time.

#include "app/playback/AudioEngine.h"
#include "tests/app/playback/EngineRig.h"
#include "tests/platform/audio/GraphRigs.h"
#include "tests/support/SignalAnalysis.h"

#include <gtest/gtest.h>

#include <numbers>

namespace quillet {
namespace {

using Main = PacedRig::Main;

struct LateRig : PacedRig {
    AudioEngine engine{ graph, scheduler };
    std::shared_ptr<PlainPlaybackState> state = std::make_shared<PlainPlaybackState>();

    explicit LateRig(bool plays = true)
        : PacedRig(64)
    {
        engine.setAppState(state);
        engine.setAudioFile(std::make_shared<MemoryAudioFile>(
            44100, 44100 * 4, [](double t) { return 0.5 * std::sin(2 * std::numbers::pi * 441 * t); }));
        state->start = 1;
        state->end = 1.3;
        if (!plays)
            return;
        engine.play(1, 1.3);
        waitUntilReady();
    }
};

constexpr std::int64_t pass = 13230;

TEST(LateMainThread, ALoopSwitchedOffAfterTheJointUnheardOfEndsThere)
{
    for (const std::int64_t late : { 441, 2205 }) {
        LateRig rig;
        rig.pull(pass + late, Main::late);
        rig.state->loop = false;
        rig.engine.nextSegmentDidChange();
        rig.waitUntilReady();
        rig.pull(4410);
        rig.scheduler.advance(0.1);
        rig.pull(44100);
        EXPECT_FALSE(rig.state->isPlaying);
        EXPECT_EQ(rig.state->position, 1);
        EXPECT_LT(soundingLength(rig.left), pass + late + 700) << "the next pass must not go on";
    }
}

TEST(LateMainThread, PassesAndPausesKeepTheirTimeAndTheHeadFollows)
{
    LateRig rig;
    rig.state->delayMilliseconds = 250;
    rig.engine.nextSegmentDidChange();
    for (int turn = 0; turn < 12; ++turn) {
        rig.pull(7000, Main::late);
        rig.scheduler.advance(7000.0 / 44100);
    }
    const auto pauses = gaps(rig.left, 2000);
    ASSERT_GE(pauses.size(), 2U);
    for (std::size_t i = 0; i + 1 < pauses.size(); ++i) {
        EXPECT_NEAR(static_cast<double>(pauses[i].frameCount), 11025, 44);
        EXPECT_EQ(pauses[i + 1].firstFrame - pauses[i].firstFrame, pass + 11025);
    }
    EXPECT_TRUE(rig.state->isPlaying);
    EXPECT_GE(rig.state->position, 1);
    EXPECT_LE(rig.state->position, 1.3);
}

TEST(LateMainThread, ManyPassesLaterItTakesOverTheOneThatSounds)
{
    LateRig rig;
    rig.pull(5 * pass + 3000, Main::late);
    rig.scheduler.advance(0.1);
    rig.pull(6000);
    // A whole number of periods fits the region: any restart would be a step or a hole.
    EXPECT_LE(longestHole(rig.left, 200, std::ssize(rig.left)), 44);
    EXPECT_NEAR(rig.state->position, 1 + 9000.0 / 44100, 0.06);
    rig.state->loop = false;
    rig.engine.nextSegmentDidChange();
    rig.waitUntilReady();
    rig.pull(pass);
    rig.scheduler.advance(0.1);
    EXPECT_FALSE(rig.state->isPlaying);
}

TEST(LateMainThread, PassesOfOtherSpeedsKeepTheirTimeAndFollowTheHandOnceTheyAreTakenOver)
{
    struct Steps final : PlaybackState {
        PlainPlaybackState& plain;
        AudioEngine* engine = nullptr;
        std::int64_t present = 0;
        explicit Steps(PlainPlaybackState& values)
            : plain(values)
        {
        }
        [[nodiscard]] bool holdEnabled() const override { return false; }
        [[nodiscard]] double holdPosition() const override { return 0; }
        [[nodiscard]] TimeRange region() const override { return plain.region(); }
        [[nodiscard]] bool loopEnabled() const override { return true; }
        [[nodiscard]] std::int64_t loopDelaySeconds() const override { return 0; }
        [[nodiscard]] std::int64_t loopDelayMilliseconds() const override { return 0; }
        [[nodiscard]] std::vector<UpcomingPass> upcomingPasses() const override
        {
            std::vector<UpcomingPass> passes;
            for (std::int64_t number = present + 1; number < 6; ++number)
                passes.push_back({ .segment = region(), .speed = speedOf(number), .times = 1, .number = number });
            return passes;
        }
        void passBegins(const UpcomingPass& next, std::int64_t repetition) override
        {
            present = next.number + repetition;
            engine->timePitch().setRate(*next.speed / 100);
        }
        [[nodiscard]] static double speedOf(std::int64_t number) { return 50 + 25 * static_cast<double>(number); }
        void setIsPlaying(bool) override { }
        void setPlaybackPosition(double) override { }
        void playbackDidEnd() override { }
    };
    for (const std::int64_t lateFrames : { 64, 4410, 22050 }) {
        SCOPED_TRACE(lateFrames);
        LateRig rig(false);
        // A whole number of periods.
        rig.state->end = 1 + 13200.5 / 44100;
        const auto steps = std::make_shared<Steps>(*rig.state);
        steps->engine = &rig.engine;
        rig.engine.setAppState(steps);
        rig.engine.timePitch().setRate(0.5);
        rig.engine.play(1, rig.state->end);
        rig.waitUntilReady();
        // Passes at 50, 75, 100, 125, 150 and 175 %.
        double seconds = 0;
        for (std::int64_t number = 0; number < 6; ++number)
            seconds += 13200.0 / 44100 / (Steps::speedOf(number) / 100);
        for (std::int64_t done = 0; done < static_cast<std::int64_t>((seconds + 0.5) * 44100); done += lateFrames) {
            rig.pull(lateFrames, Main::late);
            rig.scheduler.advance(static_cast<double>(lateFrames) / 44100);
        }
        EXPECT_NEAR(static_cast<double>(soundingLength(rig.left) - *firstSound(rig.left)), seconds * 44100, 80);
        EXPECT_LE(longestHole(rig.left, *firstSound(rig.left),
                              *firstSound(rig.left) + static_cast<std::int64_t>(seconds * 44100) - 200),
                  60);
    }
    // A hand's change is heard in a pass that had a speed of its own.
    LateRig rig(false);
    const auto steps = std::make_shared<Steps>(*rig.state);
    steps->engine = &rig.engine;
    rig.engine.setAppState(steps);
    rig.engine.timePitch().setRate(0.5);
    rig.state->end = 2;
    rig.engine.play(1, 2);
    rig.waitUntilReady();
    rig.pull(2 * 44100 + 8820);
    ASSERT_EQ(steps->present, 1);
    const double before = rig.engine.heardSeconds().value_or(0);
    rig.engine.timePitch().setRate(3);
    rig.pull(8820);
    EXPECT_GT(rig.engine.heardSeconds().value_or(0) - before, 0.35);
}

}  // namespace
}  // namespace quillet
