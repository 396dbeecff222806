// What the stores write under which key, what they make of what they find there, and the stems that one of them keeps.

#include "AppCore/RecentFilesStore.h"
#include "AppCore/SettingsStore.h"
#include "AppCore/StemSession.h"
#include "AppCore/StemSessionStore.h"
#include "AppCore/StemSettingsStore.h"
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <fstream>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace quillet {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using Texts = std::vector<std::string>;
using Stems = std::vector<StemSession::Stem>;

struct Stores : testing::Test {
    MemoryDefaultsDomain defaults;
    RecentFilesStore recentFiles{ defaults };
    SettingsStore settings{ defaults };
    StemSessionStore sessions{ defaults };

    const Stems stems{ { "drums", "/stems/été/d.wav", true }, { "bass", "/caf\xE9/b.wav" }, { "other", "/\xEF\xBF\xBD.wav" } };
};

TEST_F(Stores, EachFileHasARecordUnderItsWholePath)
{
    const FilePath notText = "/music/caf\xE9.mp3";
    settings.save({ .speed = 50 }, "/music/a.mp3");
    settings.save({ .speed = 60 }, "/music/a.mp3");
    settings.save({ .speed = 70 }, notText);
    sessions.save({ stems }, notText);
    sessions.save({}, "/live/a.mp3");
    EXPECT_THAT(defaults.allKeys(),
                UnorderedElementsAre("settings./music/a.mp3", "settings./music/caf\xE9.mp3", "stemSession./music/caf\xE9.mp3",
                                     "stemSession./live/a.mp3"));
    EXPECT_EQ(settings.load("/music/a.mp3"), FileSettings{ .speed = 60 });
    EXPECT_EQ(settings.load(notText), FileSettings{ .speed = 70 });
    EXPECT_EQ(settings.load("/a.mp3"), std::nullopt);
    EXPECT_EQ(sessions.load(notText), stems);
    EXPECT_EQ(sessions.load("/live/a.mp3"), Stems{});
    EXPECT_EQ(sessions.load("/a.mp3"), std::nullopt);
    EXPECT_EQ(nlohmann::json::parse(*defaults.data("stemSession./music/caf\xE9.mp3")), nlohmann::json::parse(R"([
        { "key": "drums", "filePath": "/stems/été/d.wav", "isMuted": true },
        { "key": "bass", "filePath": [47, 99, 97, 102, 233, 47, 98, 46, 119, 97, 118], "isMuted": false },
        { "key": "other", "filePath": "/�.wav", "isMuted": false } ])"));
}

TEST_F(Stores, WhatCannotBeEncodedLeavesTheRecordAlone)
{
    settings.save({ .speed = 50 }, "/a");
    settings.save({ .speed = std::numeric_limits<double>::infinity() }, "/a");
    EXPECT_EQ(settings.load("/a"), FileSettings{ .speed = 50 });
    sessions.save({ stems }, "/a");
    sessions.save({ { { "caf\xE9", "/new.wav" } } }, "/a");
    EXPECT_EQ(sessions.load("/a"), stems);
}

TEST_F(Stores, WhatDoesNotDecodeCountsAsAbsentAndStays)
{
    defaults.setData("settings./a", "{}");
    EXPECT_FALSE(settings.load("/a"));
    EXPECT_EQ(defaults.data("settings./a"), "{}");

    const std::string good = R"({"isMuted":true,"key":"solo","filePath":"/s.wav","volume":1})";
    defaults.setData("stemSession./a", '[' + good + ']');
    EXPECT_EQ(sessions.load("/a"), (Stems{ { "solo", "/s.wav", true } }));
    for (const std::string& text :
         Texts{ "", "null", "{}", good, '[' + good + ",null]", '[' + good, '[' + good + ",[]]",
                R"([{"key":"solo","filePath":"/s.wav"}])", R"([{"key":1,"filePath":"/s.wav","isMuted":true}])",
                R"([{"key":"solo","filePath":"/s.wav","isMuted":1}])", R"([{"key":"solo","filePath":null,"isMuted":true}])",
                R"([{"key":"solo","filePath":[47,256],"isMuted":true}])",
                R"([{"key":"solo","filePath":[47,-1],"isMuted":true}])", "[\"\xE9\"]" }) {
        defaults.setData("stemSession./a", text);
        EXPECT_FALSE(sessions.load("/a")) << text;
        EXPECT_EQ(defaults.data("stemSession./a"), text);
    }
}

TEST_F(Stores, ClearingTakesItsOwnRecordsAndNothingElse)
{
    for (const char* path : { "/a", "/a.mp3" }) {
        recentFiles.push(path);
        settings.save({}, path);
        sessions.save({ stems }, path);
    }
    for (const char* other : { "QLT.settings.", "settings", "stemSession" })
        defaults.setString(other, "kept");
    sessions.remove("/a");
    EXPECT_THAT(defaults.keysWithPrefix("stemSession."), ElementsAre("stemSession./a.mp3"));
    settings.clearAll();
    EXPECT_THAT(defaults.allKeys(),
                UnorderedElementsAre("recentFiles", "stemSession./a.mp3", "QLT.settings.", "settings", "stemSession"));
    sessions.clearAll();
    recentFiles.clear();
    EXPECT_THAT(defaults.allKeys(), UnorderedElementsAre("QLT.settings.", "settings", "stemSession"));
}

TEST_F(Stores, ThePushedFileComesFirstAndOnlyOnceAndTenAreKept)
{
    for (const char* path : { "/1", "/2", "/a", "/A", "/3", "/4", "/5", "/6", "/7", "/a", "/8", "/9" })
        recentFiles.push(path);
    EXPECT_EQ(defaults.stringArray("recentFiles"), (Texts{ "/9", "/8", "/a", "/7", "/6", "/5", "/4", "/3", "/A", "/2" }));
}

TEST_F(Stores, RecentFilesThatAreGoneAreDroppedFromTheStoredListToo)
{
    const TemporaryFolder folder;
    const FilePath song = folder / "song \xE9.wav";
    std::ofstream(song).put('x');
    for (const FilePath& path : { folder.path(), folder / "gone.wav", song })
        recentFiles.push(path);
    EXPECT_THAT(recentFiles.all(), ElementsAre(song, folder.path()));
    EXPECT_EQ(defaults.stringArray("recentFiles"), (Texts{ song.native(), folder.path().native() }));

    defaults.setString("recentFiles", "/A");
    EXPECT_TRUE(recentFiles.all().empty());
    EXPECT_EQ(defaults.string("recentFiles"), "/A");
    recentFiles.push("/B");
    EXPECT_EQ(defaults.stringArray("recentFiles"), Texts{ "/B" });
}

TEST_F(Stores, StemsAndTheirToolsLieAtHomeUntilOtherFoldersAreChosen)
{
    const StemSettingsStore store(defaults);
    for (const char* home : { "/home/ann", "/home/ben" }) {
        setenv("HOME", home, 1);
        EXPECT_EQ(store.stemsDirectory(), FilePath(home) / ".quillet/stems");
        EXPECT_EQ(store.dependenciesDirectory(), FilePath(home) / ".quillet/venv");
    }
    defaults.setString("QLT.stemsDirectory", "/mnt/my stems");
    defaults.setString("QLT.dependenciesDirectory", "/mnt/\xE9");
    EXPECT_EQ(store.stemsDirectory(), "/mnt/my stems");
    EXPECT_EQ(store.dependenciesDirectory(), "/mnt/\xE9");
}

TEST(StemSession, MutesTheFirstStemOfTheKey)
{
    StemSession session{ { { "drums", "/d.wav" }, { "bass", "/b.wav" }, { "drums", "/e.wav" } } };
    session.setMuted(true, "drums");
    session.setMuted(true, "drums");
    session.setMuted(true, "piano");
    EXPECT_EQ(session, (StemSession{ { { "drums", "/d.wav", true }, { "bass", "/b.wav" }, { "drums", "/e.wav" } } }));
    session.setMuted(false, "drums");
    EXPECT_FALSE(session.stems.front().isMuted);
}

TEST(StemSession, ASeparationsFilesComeInTheFixedOrder)
{
    const std::map<std::string, FilePath> files{ { "bass", "/b" },  { "drums", "/d" },  { "guitar", "/g" },
                                                 { "other", "/o" }, { "vocals", "/v" }, { "zither", "/z" } };
    EXPECT_EQ(
        StemSession::fromSeparation(files),
        (StemSession{ { { "vocals", "/v" }, { "drums", "/d" }, { "bass", "/b" }, { "guitar", "/g" }, { "other", "/o" } } }));
}

TEST(StemSession, ComesBackOnlyWithAllItsFiles)
{
    const auto exists = [](const FilePath& file) { return file != "/gone"; };
    EXPECT_TRUE((StemSession{ { { "drums", "/d" }, { "bass", "/b" } } }).isRestorable(exists));
    EXPECT_FALSE((StemSession{ { { "drums", "/d" }, { "bass", "/gone" } } }).isRestorable(exists));
    EXPECT_FALSE(StemSession{}.isRestorable(exists));
}

TEST(StemSession, ShowsKeysAsCapitalisedWords)
{
    const std::pair<const char*, const char*> cases[] = {
        { "vocals", "Vocals" },           { "other", "Other" },
        { "lead GUITAR", "Lead Guitar" }, { "", "" },
        { "2nd  violin", "2nd  Violin" }, { "\xC3\xA9tude", "\xC3\xA9tude" },
    };
    for (const auto& [key, expected] : cases)
        EXPECT_EQ(StemSession::displayName(key), expected);
}

}  // namespace
}  // namespace quillet
