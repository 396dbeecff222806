#include "app/core/FileLoader.h"

#include "tests/support/StateRig.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace quillet {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

struct FileLoaderTest : testing::Test, StateRig {
    TemporaryFolder folder;
    std::vector<std::string> messages;
    std::vector<std::string> errors;

    FileLoaderTest()
    {
        QObject::connect(state.get(), &AppState::loadingStateChanged, [this] {
            if (state->loadingState().stage == LoadingState::Stage::loading)
                messages.push_back(state->loadingState().message);
        });
        loader.onError([this](const std::string& message) { errors.push_back(message); });
    }

    /// A song that can be opened.
    FilePath song(const std::string& name, double seconds = 10)
    {
        const FilePath path = folder / name;
        std::ofstream(path) << name;
        opener.add(path, sampleRate, static_cast<std::int64_t>(seconds * sampleRate));
        return path;
    }

    void deliver() { scheduler.advance(0); }

    void open(const FilePath& path, RestoreSettings restoreSettings = RestoreSettings::no)
    {
        messages.clear();
        loader.loadFile(path, restoreSettings);
        finishWork();
    }

    [[nodiscard]] LoadingState::Stage stage() const { return state->loadingState().stage; }
};

TEST_F(FileLoaderTest, AFileComesWithTheDefaultsAndIsTheMostRecent)
{
    const FilePath path = song("a.wav");
    state->setSpeed(200);
    open(path);
    EXPECT_EQ(stage(), LoadingState::Stage::loaded);
    EXPECT_EQ(state->audioFileURL(), path);
    EXPECT_EQ(state->audioDuration(), 10);
    EXPECT_EQ(state->currentSettings(), (FileSettings{ .regionEnd = 10 }));
    EXPECT_EQ(state->waveformSamples().size(), 2000);
    EXPECT_EQ(engine.timePitch().rate(), 1);
    EXPECT_TRUE(engine.eq().bypass());
    EXPECT_EQ(messages.at(1), "Generating waveform...");
    EXPECT_EQ(messages.back(), "Generating waveform... 100%");
    EXPECT_THAT(state->recentFiles(), ElementsAre(path));

    state->togglePlayPause();
    EXPECT_EQ(graph.players.front()->segment, (FrameRange{ 0, 80'000 }));
}

TEST_F(FileLoaderTest, OnlyFromTheRecentListItComesAsItWasLeft)
{
    const FilePath first = song("first.wav");
    const FilePath second = song("second.wav");
    open(first);
    state->setRegion({ 2, 4 });
    state->setSpeed(40);
    state->setPitch(-300);
    state->setEqEnabled(true);
    state->setEqGains({ 1, 2, 3, 4, 5 });
    open(second);
    EXPECT_EQ(state->speed(), 100);

    // Left at once, before the settings would have been saved by themselves.
    open(first, RestoreSettings::yes);
    EXPECT_THAT(messages, Contains("Loading cached waveform..."));
    EXPECT_THAT(messages, testing::Not(Contains("Generating waveform...")));
    EXPECT_EQ(state->waveformSamples().size(), 2000);
    EXPECT_EQ(state->regionStart(), 2);
    EXPECT_EQ(state->speed(), 40);
    EXPECT_EQ(engine.timePitch().rate(), 0.4);
    EXPECT_EQ(engine.timePitch().pitch(), -300);
    EXPECT_FALSE(engine.eq().bypass());
    EXPECT_EQ(engine.eq().gain(4), 5);
    EXPECT_THAT(state->recentFiles(), ElementsAre(first, second));

    open(first);
    EXPECT_EQ(state->currentSettings(), (FileSettings{ .regionEnd = 10 }));
    EXPECT_TRUE(state->offeredSettings()) << "but they are not lost";
}

TEST_F(FileLoaderTest, ASongThatWasPractisedOffersItsSettingsUntilTheFirstChange)
{
    const FilePath path = song("a.wav");
    const FileSettings practised{ .regionStart = 1, .regionEnd = 3, .speed = 60 };
    settings.save(practised, path);
    // Also the next time, when the defaults have been saved in their place.
    for (int time = 0; time < 2; ++time) {
        open(path);
        scheduler.advance(1);
        EXPECT_EQ(settings.load(path), (FileSettings{ .regionEnd = 10 }));
        EXPECT_EQ(state->offeredSettings(), practised);
    }
    state->restoreOfferedSettings();
    EXPECT_EQ(state->currentSettings(), practised);
    EXPECT_EQ(engine.timePitch().rate(), 0.6);
    EXPECT_FALSE(state->offeredSettings());
    scheduler.advance(1);
    EXPECT_EQ(settings.load(path), practised);

    open(path);
    state->setSpeed(99);
    EXPECT_FALSE(state->offeredSettings());
    open(path);
    EXPECT_EQ(state->offeredSettings(), (FileSettings{ .regionEnd = 10, .speed = 99 }));
    state->dismissOfferedSettings();
    open(path);
    EXPECT_FALSE(state->offeredSettings()) << "nor ever again";
}

TEST_F(FileLoaderTest, ManyNamesAreOneSongAndOneThatIsGoneLeavesTheList)
{
    const FilePath path = song("a.wav");
    std::filesystem::create_directories(folder / "elsewhere/inside");
    std::filesystem::create_directory_symlink(folder / "elsewhere/inside", folder / "link");
    song("elsewhere/b.wav");
    for (const char* name : { "./a.wav", "elsewhere/../a.wav", "link/../../a.wav", ".//a.wav" }) {
        open(folder / name);
        EXPECT_EQ(state->audioFileURL(), path) << name;
    }
    EXPECT_THAT(state->recentFiles(), ElementsAre(path));
    std::filesystem::remove(path);
    opener.remove(path);
    open(path, RestoreSettings::yes);
    EXPECT_THAT(errors, ElementsAre("Could not read audio file duration."));
    EXPECT_THAT(state->recentFiles(), IsEmpty());
}

TEST_F(FileLoaderTest, SettingsThatDoNotFitTheFileAreMadeToFit)
{
    const FilePath path = song("a.wav");
    settings.save({ .regionStart = 20, .regionEnd = 30, .speed = 0, .pitch = 5000, .eqGains = { 99 } }, path);
    open(path, RestoreSettings::yes);
    EXPECT_EQ(state->currentSettings(),
              (FileSettings{ .regionEnd = 10, .speed = 5, .pitch = 1200, .eqGains = { 12, 0, 0, 0, 0 } }));
    open(song("between.wav"));
    settings.save({ .regionStart = 4, .regionEnd = 30 }, path);
    open(path, RestoreSettings::yes);
    EXPECT_EQ(state->currentSettings(), (FileSettings{ .regionStart = 4, .regionEnd = 10 }));
}

TEST_F(FileLoaderTest, TheLaterOfTwoRequestsWinsWhicheverIsReadyFirst)
{
    const FilePath slow = song("slow.wav");
    const FilePath quick = song("quick.wav", 5);
    const FilePath gone = folder / "gone.wav";
    for (const FilePath& outdated : { slow, gone }) {
        messages.clear();
        loader.loadFile(outdated, RestoreSettings::no);
        loader.loadFile(quick, RestoreSettings::no);
        background.finish(1);
        deliver();
        background.finish(0);
        deliver();
        EXPECT_EQ(stage(), LoadingState::Stage::loaded);
        EXPECT_EQ(state->audioFileURL(), quick);
        EXPECT_EQ(state->audioDuration(), 5);
        EXPECT_THAT(errors, IsEmpty());
        EXPECT_FALSE(cache.get(outdated));
        background.finish();
        deliver();
    }

    // Ready, but not delivered yet, when the later one comes.
    loader.loadFile(slow, RestoreSettings::no);
    background.finish(background.waiting() - 1);
    loader.loadFile(quick, RestoreSettings::no);
    deliver();
    EXPECT_EQ(stage(), LoadingState::Stage::loading);
    EXPECT_EQ(state->audioFileURL(), quick);
}

TEST_F(FileLoaderTest, WhatCannotBeOpenedLeavesNoFileAndSaysWhy)
{
    const FilePath path = song("a.wav");
    open(path);
    open(folder / "gone.wav");
    EXPECT_THAT(errors, ElementsAre("Could not read audio file duration."));
    EXPECT_EQ(stage(), LoadingState::Stage::idle);
    EXPECT_EQ(state->audioFileURL(), std::nullopt);
    state->togglePlayPause();
    EXPECT_FALSE(graph.players.front()->isSounding);
    EXPECT_THAT(state->recentFiles(), ElementsAre(path));

    // Removed between opening and reading.
    errors.clear();
    const FilePath vanishing = folder / "vanishing.wav";
    opener.add(vanishing, sampleRate, 8000);
    open(vanishing);
    EXPECT_EQ(errors.size(), 1);
    EXPECT_EQ(stage(), LoadingState::Stage::idle);

    // The fields for times can show no more than 999 minutes.
    errors.clear();
    const FilePath longest = song("longest.wav");
    for (const bool isTooLong : { false, true }) {
        opener.add(longest, 10, isTooLong ? 600'000 : 599'999);
        open(longest);
        EXPECT_EQ(stage(), isTooLong ? LoadingState::Stage::idle : LoadingState::Stage::loaded);
    }
    EXPECT_THAT(errors, ElementsAre("File duration exceeds the maximum supported length (999:59.999)."));
}

TEST_F(FileLoaderTest, WhatPlaysStopsAtOnceAndNothingIsSavedUnderTheNewName)
{
    const FilePath first = song("first.wav");
    const FilePath second = song("second.wav");
    settings.save({ .speed = 77 }, second);
    open(first);
    state->togglePlayPause();
    state->setSpeed(60);
    loader.loadFile(second, RestoreSettings::yes);
    EXPECT_FALSE(graph.players.front()->isSounding);
    EXPECT_EQ(settings.load(first)->speed, 60);

    // A key that changes the speed while the file is being opened.
    state->setSpeed(65);
    scheduler.advance(10);
    EXPECT_EQ(settings.load(second)->speed, 77);
    background.finish();
    deliver();
    EXPECT_EQ(state->speed(), 77);
}

TEST_F(FileLoaderTest, StemsComeBackWholeOrNotAtAll)
{
    const FilePath path = song("a.wav");
    const FilePath vocals = song("vocals.wav");
    const FilePath bass = song("bass.wav");
    const StemSession session{ { { "vocals", vocals, true }, { "bass", bass, false } } };
    stemSessions.save(session, path);
    open(path);
    EXPECT_EQ(state->stemSession(), session);
    EXPECT_TRUE(engine.isInStemMode());
    EXPECT_EQ(graph.mixers.at(1)->volume, 0);

    open(song("other.wav"));
    EXPECT_EQ(state->stemSession(), std::nullopt);
    EXPECT_FALSE(engine.isInStemMode());

    std::filesystem::remove(bass);
    open(path);
    EXPECT_EQ(stage(), LoadingState::Stage::loaded);
    EXPECT_EQ(state->stemSession(), std::nullopt);
    EXPECT_FALSE(engine.isInStemMode());
    EXPECT_TRUE(stemSessions.load(path)) << "it stays stored";
}

}  // namespace
}  // namespace quillet
