#include "tests/app/playback/EngineRig.h"

#include <gtest/gtest.h>

#include <span>
#include <string>

namespace quillet {
namespace {

using Indices = std::vector<int>;

struct StemRig : EngineRig {
    std::vector<StemSession::Stem> stems{ { "vocals", "/stems/vocals.wav", false },
                                          { "drums", "/stems/missing.wav", false },
                                          { "bass", "/stems/bass.wav", true },
                                          { "other", "/stems/short.wav", false } };

    StemRig()
    {
        opener.add("/stems/vocals.wav", 8000, 80000);
        opener.add("/stems/bass.wav", 8000, 80000);
        opener.add("/stems/short.wav", 8000, 20000);
    }

    void enter(std::span<const StemSession::Stem> chosen) { engine->enterStemMode(openStemFiles(opener, chosen)); }
    FakeAudioGraph::Node& stem(std::size_t index) { return *graph.players.at(1 + index); }
};

TEST(AudioEngineStems, TheReadableStemsPlayInStepInsteadOfTheFile)
{
    StemRig rig;
    rig.enter(rig.stems);
    EXPECT_EQ(rig.graph.playersHeard(), (Indices{ 1, 2, 3 }));
    rig.graph.batches.clear();

    rig.playRegion();
    ASSERT_EQ(rig.graph.batches.size(), 1U);
    EXPECT_EQ(rig.stem(0).segment, (FrameRange{ 16000, 16000 }));
    EXPECT_EQ(rig.stem(1).segment, (FrameRange{ 16000, 16000 }));
    EXPECT_EQ(rig.stem(2).segment, (FrameRange{ 16000, 16000 }));
    EXPECT_EQ(rig.stem(0).plan.passes.front().segment, (FrameRange{ 16000, 16000 }));
    EXPECT_TRUE(rig.stem(0).completions.back());
    EXPECT_FALSE(rig.stem(1).completions.back() || rig.stem(2).completions.back());
    EXPECT_EQ(rig.player().scheduleCount, 0);

    rig.stem(0).sampleTime = 4000;
    rig.stem(1).sampleTime = 5000;
    rig.scheduler.advance(0.05);
    EXPECT_EQ(rig.state->position, 2.5);

    FakeAudioGraph::complete(rig.stem(0));
    rig.scheduler.advance(0.02);
    EXPECT_EQ(rig.stem(2).scheduleCount, 2);
    rig.engine->pause();
    EXPECT_FALSE(rig.stem(0).isSounding || rig.stem(1).isSounding || rig.stem(2).isSounding);
}

TEST(AudioEngineStems, TheyPlayToTheEndOfTheLongestEachAtItsOwnRate)
{
    StemRig rig;
    rig.opener.add("/stems/fine.wav", 48000, 240000);
    const std::vector<StemSession::Stem> stems{ { "drums", "/stems/fine.wav", false }, { "bass", "/stems/bass.wav", false } };
    rig.enter(stems);
    rig.engine->play(2, 9);
    EXPECT_EQ(rig.stem(0).segment, (FrameRange{ 96000, 336000 }));
    EXPECT_EQ(rig.stem(1).segment, (FrameRange{ 16000, 56000 }));
    rig.engine->play(6, 9);
    EXPECT_TRUE(rig.stem(0).isSounding && rig.stem(1).isSounding) << "the second stem has sound where the first has none";
    rig.engine->play(10, 11);
    EXPECT_FALSE(rig.stem(0).isSounding || rig.stem(1).isSounding);
}

TEST(AudioEngineStems, GainsActOnOneStemWithoutRestartingIt)
{
    StemRig rig;
    rig.enter(rig.stems);
    const auto volumes = [&] {
        // The first mixer is the sum.
        return std::vector{ rig.graph.mixers.at(1)->volume, rig.graph.mixers.at(2)->volume, rig.graph.mixers.at(3)->volume };
    };
    EXPECT_EQ(volumes(), (std::vector<double>{ 1, 0, 1 }));
    rig.playRegion();
    const auto commands = rig.graph.batches.size();
    rig.engine->setStemVolume("vocals", 0);
    rig.engine->setStemVolume("bass", 0.5);
    rig.engine->setStemVolume("piano", 2);
    EXPECT_EQ(volumes(), (std::vector<double>{ 0, 0.5, 1 }));
    EXPECT_EQ(rig.graph.batches.size(), commands);
}

TEST(AudioEngineStems, LeavingThemReturnsToTheFileAndStops)
{
    StemRig rig;
    rig.enter(rig.stems);
    rig.playRegion();
    const auto end = rig.stem(0).completions.back();
    rig.engine->exitStemMode();
    EXPECT_FALSE(rig.state->isPlaying);
    EXPECT_EQ(rig.state->position, 2);
    EXPECT_EQ(rig.graph.playersHeard(), Indices{ 0 });
    EXPECT_FALSE(rig.stem(0).isInGraph || rig.stem(1).isInGraph || rig.graph.mixers.at(0)->isInGraph);

    end();
    rig.scheduler.advance(1);
    EXPECT_EQ(rig.player().scheduleCount, 0);
    rig.playRegion();
    EXPECT_EQ(rig.player().segment, EngineRig::frames(2, 4));

    // Outside stem mode it is no stop.
    rig.engine->exitStemMode();
    EXPECT_TRUE(rig.player().isSounding);
}

TEST(AudioEngineStems, EnteringThemStopsWhatPlaysAndTakesTheNewOnes)
{
    StemRig rig;
    rig.playRegion();
    rig.enter(rig.stems);
    rig.complete();
    rig.scheduler.advance(1);
    EXPECT_EQ(rig.stem(0).scheduleCount, 0);
    rig.playRegion();
    rig.enter(std::span(rig.stems).last(1));
    EXPECT_FALSE(rig.state->isPlaying);
    EXPECT_EQ(rig.graph.playersHeard(), Indices{ 4 });
}

TEST(AudioEngineStems, TheFileIsHeardIfNoStemCanBeOpened)
{
    StemRig rig;
    rig.enter(std::span(rig.stems).subspan(1, 1));
    EXPECT_FALSE(rig.engine->isInStemMode());
    EXPECT_EQ(rig.graph.playersHeard(), Indices{ 0 });
    rig.playRegion();
    EXPECT_TRUE(rig.player().isSounding);
}

}  // namespace
}  // namespace quillet
