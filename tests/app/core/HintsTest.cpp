// The hints of the first song in a fresh profile.

#include "app/core/Hints.h"

#include "AppCore/RecentFilesStore.h"
#include "tests/support/StateRig.h"

#include <gtest/gtest.h>

namespace quillet {
namespace {

struct HintsTest : testing::Test, StateRig {
    Notifications notifications;
    CommandCenter commands{ *state, notifications };

    void show() { state->setLoadingState(LoadingState::loaded()); }
};

TEST_F(HintsTest, AreGoneOnceAllOfThemHaveBeenDone)
{
    Hints hints(*state, commands, defaults);
    EXPECT_FALSE(hints.areShown());
    // What a song comes with is not the user's doing.
    state->setSpeed(60);
    show();
    state->togglePlayPause();
    state->setPlaybackPosition(2);
    commands.execute(CommandId::markRegionStart);
    state->setPlaybackPosition(4);
    commands.execute(CommandId::markRegionEnd);
    state->togglePlayPause();
    state->togglePlayPause();
    commands.execute(CommandId::increaseSpeed);
    EXPECT_TRUE(hints.areShown()) << "nothing has been dragged";
    state->togglePlayPause();
    state->setRegion({ 1, 2 });
    EXPECT_TRUE(hints.areShown());
    state->togglePlayPause();
    EXPECT_FALSE(hints.areShown());
    EXPECT_FALSE(Hints(*state, commands, defaults).areShown());
}

TEST_F(HintsTest, AreNeverSeenByAProfileThatHasHadSongs)
{
    show();
    recentFiles.push("/a.mp3");
    EXPECT_FALSE(Hints(*state, commands, defaults).areShown());
    recentFiles.clear();
    EXPECT_FALSE(Hints(*state, commands, defaults).areShown());
}

}  // namespace
}  // namespace quillet
