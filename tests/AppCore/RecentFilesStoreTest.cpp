#include "AppCore/RecentFilesStore.h"

#include "platform/defaults/MemoryDefaultsDomain.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fstream>
#include <string>
#include <vector>

namespace quillet {
namespace {

using testing::ElementsAre;
using Texts = std::vector<std::string>;

constexpr const char* storedKey = "recentFiles";

TEST(RecentFilesStore, APushedFileComesFirstAndOnlyOnce)
{
    MemoryDefaultsDomain defaults;
    RecentFilesStore store(defaults);
    for (const char* path : { "/A", "/B", "/a", "/A" })
        store.push(path);
    EXPECT_EQ(defaults.stringArray(storedKey), (Texts{ "/A", "/a", "/B" }));
}

TEST(RecentFilesStore, KeepsTheLastTen)
{
    MemoryDefaultsDomain defaults;
    RecentFilesStore store(defaults);
    Texts expected;
    for (int i = 0; i < 12; ++i) {
        store.push("/song " + std::to_string(i));
        if (i >= 2)
            expected.insert(expected.begin(), "/song " + std::to_string(i));
    }
    EXPECT_EQ(defaults.stringArray(storedKey), expected);
}

TEST(RecentFilesStore, DropsWhatIsGoneFromTheStoredListToo)
{
    const TemporaryFolder folder;
    const FilePath song = folder / "song \xE9.wav";
    const FilePath gone = folder / "gone.wav";
    std::ofstream(song).put('x');

    MemoryDefaultsDomain defaults;
    RecentFilesStore store(defaults);
    for (const FilePath& path : { folder.path(), gone, song })
        store.push(path);
    EXPECT_THAT(store.all(), ElementsAre(song, folder.path()));
    EXPECT_EQ(defaults.stringArray(storedKey), (Texts{ song.native(), folder.path().native() }));
}

TEST(RecentFilesStore, WhatIsNoListOfTextsIsEmptyUntilTheNextPush)
{
    MemoryDefaultsDomain defaults;
    RecentFilesStore store(defaults);
    defaults.setString(storedKey, "/A");
    EXPECT_TRUE(store.all().empty());
    EXPECT_EQ(defaults.string(storedKey), "/A");
    store.push("/B");
    EXPECT_EQ(defaults.stringArray(storedKey), Texts{ "/B" });
    store.clear();
    EXPECT_TRUE(defaults.allKeys().empty());
}

}  // namespace
}  // namespace quillet
