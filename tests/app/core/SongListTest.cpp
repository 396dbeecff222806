// Several songs, or those of a folder, as a list to go through.

#include "app/core/SongFolders.h"
#include "app/core/SongOpener.h"
#include "tests/support/StateRig.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace quillet {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct SongListTest : testing::Test, StateRig {
    TemporaryFolder folder;
    Notifications notifications;
    CommandCenter commands{ *state, notifications };
    SongList songs{ *state };
    std::vector<FilePath> refused;
    bool isSearchShown = false;
    SongOpener songOpener{ { songs, commands, background, scheduler },
                           { [this](const FilePath& song) {
                                songOpener.cancel();
                                loader.loadFile(song, RestoreSettings::no);
                            },
                             [this](const FilePath& path, bool isFolder) {
                                 EXPECT_TRUE(isFolder);
                                 refused.push_back(path);
                             },
                             [this](bool isSearching) { isSearchShown = isSearching; } } };

    /// A song that can be opened.
    FilePath song(const std::string& name)
    {
        const FilePath path = folder / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << name;
        opener.add(path, sampleRate, sampleRate);
        return path;
    }

    void open(const std::vector<FilePath>& paths)
    {
        songOpener.open(paths);
        finishWork();
    }

    void execute(CommandId id)
    {
        commands.execute(id);
        finishWork();
    }

    [[nodiscard]] std::vector<std::string> found(const std::vector<FilePath>& paths) const
    {
        std::vector<std::string> names;
        for (const FilePath& path : songsIn(paths, {}))
            names.push_back(path.lexically_relative(folder.path()).native());
        return names;
    }
};

TEST_F(SongListTest, AFolderGivesItsSongsInNaturalOrderAndGoesInNoCircles)
{
    for (const char* name : { "Track 10.mp3", "track 2.MP3", "\xE9tude.ogg", ".hidden.mp3", "cover.jpg", "b/2.wav", "b/10.wav",
                              "a/1/2/3/deep.wav", "a/1/2/3/4/deeper.wav", ".trash/gone.mp3" })
        song(name);
    std::filesystem::create_directory_symlink(folder.path(), folder / "b" / "around");
    std::filesystem::create_directory(folder / "no.wav");
    EXPECT_THAT(found({ folder.path() }),
                ElementsAre("track 2.MP3", "Track 10.mp3", "\xE9tude.ogg", "a/1/2/3/deep.wav", "b/2.wav", "b/10.wav"));
    // In the order in which they are named, each once; what is named need not exist, and links are followed.
    EXPECT_THAT(
        found({ folder / "b/10.wav", folder / "x.flac", folder / "cover.jpg", folder / "b/", folder / "a/../x.flac" }),
        ElementsAre("b/10.wav", "x.flac", "b/2.wav", "b/around/track 2.MP3", "b/around/Track 10.mp3", "b/around/\xE9tude.ogg"));

    for (int i = 0; i < 2010; ++i)
        std::ofstream(folder / ("many " + std::to_string(i) + ".wav")) << i;
    EXPECT_EQ(found({ folder.path() }).size(), mostListedSongs);
}

TEST_F(SongListTest, TheListIsGoneThroughWhateverElseIsOpened)
{
    const FilePath one = song("1.wav"), two = song("2.wav"), three = song("3.wav"), other = song("other/o.wav");
    open({ folder / "1.wav", folder / "2.wav", folder / "3.wav" });
    EXPECT_EQ(state->audioFileURL(), one);
    EXPECT_EQ(songs.current(), 0);
    EXPECT_EQ(songs.previous(), nullptr);
    execute(CommandId::previousSong);
    execute(CommandId::nextSong);
    EXPECT_EQ(state->audioFileURL(), two);
    EXPECT_FALSE(state->isPlaying());

    // Another song: the list stays where it was left.
    open({ other });
    EXPECT_EQ(songs.current(), std::nullopt);
    EXPECT_EQ(*songs.previous(), two);
    EXPECT_EQ(*songs.next(), three);
    open({ folder / "other" });
    EXPECT_EQ(songs.songs().size(), 3);
    execute(CommandId::nextSong);
    EXPECT_EQ(songs.current(), 2);
    EXPECT_EQ(songs.next(), nullptr);

    // One that is gone is passed by, and may come back.
    opener.remove(two);
    execute(CommandId::previousSong);
    EXPECT_EQ(state->audioFileURL(), std::nullopt);
    EXPECT_EQ(songs.current(), 1);
    EXPECT_TRUE(songs.isUnreadable(1));
    execute(CommandId::previousSong);
    EXPECT_EQ(state->audioFileURL(), one);
    song("2.wav");
    commands.execute(CommandId::openSong, two);
    finishWork();
    EXPECT_EQ(songs.current(), 1);
    EXPECT_FALSE(songs.isUnreadable(1));
    songs.forget();
    execute(CommandId::nextSong);
    EXPECT_EQ(state->audioFileURL(), two);
}

TEST_F(SongListTest, WhatIsOpenedMeanwhileWinsAndNothingIsRefused)
{
    song("a/1.wav");
    song("a/2.wav");
    const FilePath other = song("o.wav");
    songOpener.open({ folder / "a" });
    scheduler.advance(0.4);
    EXPECT_FALSE(isSearchShown) << "a quick search is not";
    scheduler.advance(0.2);
    EXPECT_TRUE(isSearchShown);
    songOpener.open({ other });
    EXPECT_FALSE(isSearchShown);
    finishWork();
    EXPECT_EQ(state->audioFileURL(), other);
    EXPECT_THAT(songs.songs(), IsEmpty());

    std::filesystem::create_directory(folder / "empty");
    open({ folder / "empty", folder / "notes.txt" });
    EXPECT_THAT(refused, ElementsAre(folder / "empty"));
    scheduler.advance(1);
    EXPECT_FALSE(isSearchShown);
    EXPECT_EQ(state->audioFileURL(), other);
    // The name of a file need not say what it is.
    const FilePath unnamed = song("song");
    open({ unnamed });
    EXPECT_EQ(state->audioFileURL(), unnamed);
}

}  // namespace
}  // namespace quillet
