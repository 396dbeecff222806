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

    LateRig()
        : PacedRig(64)
    {
        engine.setAppState(state);
        engine.setAudioFile(std::make_shared<MemoryAudioFile>(
            44100, 44100 * 4, [](double t) { return 0.5 * std::sin(2 * std::numbers::pi * 441 * t); }));
        state->start = 1;
        state->end = 1.3;
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

}  // namespace
}  // namespace quillet
