#include "AppCore/StemSessionStore.h"
#include "AppCore/StemSettingsStore.h"
#include "platform/defaults/MemoryDefaultsDomain.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cstdlib>

namespace quillet {
namespace {

using testing::UnorderedElementsAre;
using Stems = std::vector<StemSession::Stem>;

const StemSession twoStems{ { { "drums", "/stems/\xC3\xA9t\xC3\xA9/drums.wav", true }, { "bass", "/stems/\"b\".wav" } } };

TEST(StemSessionStore, KeepsTheStemsUnderTheTracksWholePath)
{
    MemoryDefaultsDomain defaults;
    StemSessionStore store(defaults);
    const FilePath notText = "/live/caf\xE9.mp3";
    store.save(twoStems, "/live/song.mp3");
    store.save(StemSession{}, "/studio/song.mp3");
    store.save(twoStems, notText);
    EXPECT_THAT(
        defaults.allKeys(),
        UnorderedElementsAre("stemSession./live/song.mp3", "stemSession./studio/song.mp3", "stemSession./live/caf\xE9.mp3"));
    EXPECT_EQ(nlohmann::json::parse(defaults.data("stemSession./live/song.mp3").value_or("")), nlohmann::json::parse(R"([
        { "key": "drums", "filePath": "/stems/été/drums.wav", "isMuted": true },
        { "key": "bass", "filePath": "/stems/\"b\".wav", "isMuted": false } ])"));
    EXPECT_EQ(defaults.data("stemSession./studio/song.mp3"), "[]");

    const StemSessionStore other(defaults);
    EXPECT_EQ(other.load("/live/song.mp3"), twoStems.stems);
    EXPECT_EQ(other.load(notText), twoStems.stems);
    EXPECT_EQ(other.load("/studio/song.mp3"), Stems{});
    EXPECT_EQ(other.load("/song.mp3"), std::nullopt);
}

TEST(StemSessionStore, PathsThatAreNotTextComeBackByteForByte)
{
    MemoryDefaultsDomain defaults;
    StemSessionStore store(defaults);
    const Stems stems{ { "drums", "/caf\xE9/d.wav" }, { "bass", "/\xEF\xBF\xBD.wav" }, { "other", "/\xFF[]\xC3", true } };
    store.save({ stems }, "/a");
    EXPECT_EQ(store.load("/a"), stems);

    store.save({ { { "caf\xE9", "/new.wav" } } }, "/a");
    EXPECT_EQ(store.load("/a"), stems) << "a key that cannot be stored leaves the record alone";
}

TEST(StemSessionStore, WhatDoesNotDecodeCountsAsAbsentAndStays)
{
    MemoryDefaultsDomain defaults;
    const StemSessionStore store(defaults);
    const std::string good = R"({"isMuted":true,"key":"solo","filePath":"/s.wav","volume":1})";
    defaults.setData("stemSession./a", '[' + good + ']');
    EXPECT_EQ(store.load("/a"), (Stems{ { "solo", "/s.wav", true } }));

    for (const std::string& text :
         { std::string(), std::string("null"), std::string("{}"), good, '[' + good + ",null]", '[' + good, '[' + good + ",[]]",
           std::string(R"([{"key":"solo","filePath":"/s.wav"}])"),
           std::string(R"([{"key":1,"filePath":"/s.wav","isMuted":true}])"),
           std::string(R"([{"key":"solo","filePath":"/s.wav","isMuted":1}])"),
           std::string(R"([{"key":"solo","filePath":null,"isMuted":true}])"),
           std::string(R"([{"key":"solo","filePath":[47,256],"isMuted":true}])"),
           std::string(R"([{"key":"solo","filePath":[47,-1],"isMuted":true}])"), std::string("[\"\xE9\"]") }) {
        defaults.setData("stemSession./a", text);
        EXPECT_FALSE(store.load("/a")) << text;
        EXPECT_EQ(defaults.data("stemSession./a"), text);
    }
}

TEST(StemSessionStore, RemovesOneTrackOrAllAndNothingElse)
{
    MemoryDefaultsDomain defaults;
    StemSessionStore store(defaults);
    for (const char* track : { "/a", "/a.mp3", "/b" })
        store.save(twoStems, track);
    defaults.setString("QLT.stemsDirectory", "/stems");
    defaults.setString("stemSession", "kept");
    store.remove("/a");
    EXPECT_THAT(defaults.allKeys(),
                UnorderedElementsAre("stemSession./a.mp3", "stemSession./b", "QLT.stemsDirectory", "stemSession"));
    store.clearAll();
    EXPECT_THAT(defaults.allKeys(), UnorderedElementsAre("QLT.stemsDirectory", "stemSession"));
}

TEST(StemSettingsStore, DirectoriesLieAtHomeUntilOthersAreChosen)
{
    MemoryDefaultsDomain defaults;
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
    defaults.remove("QLT.stemsDirectory");
    EXPECT_EQ(store.stemsDirectory(), "/home/ben/.quillet/stems");
}

}  // namespace
}  // namespace quillet
