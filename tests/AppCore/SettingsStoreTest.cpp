#include "AppCore/SettingsStore.h"

#include "platform/defaults/MemoryDefaultsDomain.h"

#include <gmock/gmock.h>

#include <limits>

namespace quillet {
namespace {

using testing::UnorderedElementsAre;

FileSettings withSpeed(double speedPercent)
{
    FileSettings settings;
    settings.speed = speedPercent;
    return settings;
}

TEST(SettingsStore, KeepsOneRecordUnderThePathOfEachFile)
{
    MemoryDefaultsDomain defaults;
    SettingsStore store(defaults);
    const FilePath notText = "/music/caf\xE9.mp3";
    store.save(withSpeed(50), "/music/take 3.mp3");
    store.save(withSpeed(60), "/music/take 3.mp3");
    store.save(withSpeed(70), notText);
    EXPECT_THAT(defaults.allKeys(), UnorderedElementsAre("settings./music/take 3.mp3", "settings./music/caf\xE9.mp3"));

    const SettingsStore other(defaults);
    EXPECT_EQ(other.load("/music/take 3.mp3"), withSpeed(60));
    EXPECT_EQ(other.load(notText), withSpeed(70));
    EXPECT_EQ(other.load("/music/take 4.mp3"), std::nullopt);
}

TEST(SettingsStore, WhatCannotBeEncodedLeavesTheRecordAlone)
{
    MemoryDefaultsDomain defaults;
    SettingsStore store(defaults);
    store.save(withSpeed(50), "/a.mp3");
    store.save(withSpeed(std::numeric_limits<double>::infinity()), "/a.mp3");
    store.save(withSpeed(std::numeric_limits<double>::infinity()), "/b.mp3");
    EXPECT_EQ(store.load("/a.mp3"), withSpeed(50));
    EXPECT_THAT(defaults.allKeys(), UnorderedElementsAre("settings./a.mp3"));
}

TEST(SettingsStore, WhatDoesNotDecodeCountsAsAbsentAndStays)
{
    MemoryDefaultsDomain defaults;
    SettingsStore store(defaults);
    store.save(withSpeed(50), "/good.mp3");
    defaults.setString("settings./text.mp3", *defaults.data("settings./good.mp3"));
    defaults.setData("settings./broken.mp3", "{}");
    EXPECT_FALSE(store.load("/text.mp3"));
    EXPECT_FALSE(store.load("/broken.mp3"));
    EXPECT_EQ(defaults.data("settings./broken.mp3"), "{}");
}

TEST(SettingsStore, ClearingTakesTheRecordsAndNothingElse)
{
    MemoryDefaultsDomain defaults;
    SettingsStore store(defaults);
    store.save(FileSettings{}, "/a.mp3");
    store.save(FileSettings{}, "/b.wav");
    defaults.setStringArray("recentFiles", { "/a.mp3" });
    defaults.setString("QLT.settings.", "kept");
    defaults.setString("settings", "kept");
    store.clearAll();
    EXPECT_THAT(defaults.allKeys(), UnorderedElementsAre("recentFiles", "QLT.settings.", "settings"));
}

}  // namespace
}  // namespace quillet
