#include "app/stems/BackendSentences.h"
#include "app/ui/ClosableNotice.h"
#include "app/ui/ContentView.h"
#include "app/ui/ExportNotice.h"
#include "app/ui/SeparationNotice.h"
#include "app/ui/StemControlsView.h"
#include "app/ui/StemSeparationFlow.h"
#include "app/ui/StemSeparationSheet.h"
#include "app/ui/Translations.h"
#include "tests/app/ui/WindowRig.h"

#include <QLabel>

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

namespace quillet {
namespace {

struct StemsTest : testing::Test, WindowRig {
    AppState& state = *WindowRig::state;
    ContentView view{ services };
    FilePath stems = tools / "stems" / StemFolder::pathHash(song) / "htdemucs_6s" / "song";

    StemsTest()
    {
        defaults.setString("QLT.stemsDirectory", (tools / "stems").native());
        defaults.setString("QLT.dependenciesDirectory", (tools / "venv").native());
        std::filesystem::create_directories(tools / "backend");
        for (const char* file : { "backend/separate.py", "backend/requirements.txt" })
            std::ofstream(tools / file) << "x";
        view.resize(1000, 900);
        view.show();
        state.setLoadingState(LoadingState::idle());
        state.setLoadingState(LoadingState::loaded());
    }

    [[nodiscard]] StemSeparationSheet* sheet() const
    {
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return view.findChild<StemSeparationSheet*>();
    }
    [[nodiscard]] SeparationNotice& notice() const { return *view.findChild<SeparationNotice*>(); }
    void openSheet()
    {
        commands.execute(CommandId::separateStems);
        finishWork();
    }
    void click(const QWidget& within, const char* text)
    {
        buttonIn(within, text).click();
        finishWork();
    }
    void endChild(int status, const std::string& output = {})
    {
        processes.last().end(status, output);
        finishWork();
    }
    void endSeparation()
    {
        std::filesystem::create_directories(stems);
        for (const auto key : StemSession::keys) {
            const FilePath file = stems / (std::string(key) + ".wav");
            std::ofstream(file) << "x";
            opener.add(file, sampleRate, 10 * sampleRate);
        }
        endChild(0, R"({"success": true, "stems": {}})");
    }
};

TEST_F(StemsTest, TheSheetFollowsTheSeparationAndItsStemsPlay)
{
    openSheet();
    EXPECT_TRUE(sheet()->isModal());
    EXPECT_TRUE(isShown(*sheet(),
                        "The first separation requires a one-time setup that may take several minutes. Subsequent runs will "
                        "be faster."));
    EXPECT_TRUE(isShown(*sheet(),
                        "It fetches a model that is not part of Quillet, and whose licence is unclear: whether it covers "
                        "what you do with it is for you to judge."));
    click(*sheet(), "Separate");
    EXPECT_TRUE(isShown(*sheet(), "Creating Python environment…"));
    EXPECT_FALSE(sheet()->isModal()) << "the window can be used";
    endChild(1);
    EXPECT_TRUE(isShown(*sheet(), "Process exited with code 1."));
    click(*sheet(), "Try Again");
    click(*sheet(), "Separate");
    endChild(0);
    endChild(0);
    processes.last().say("99.5%\n37%\n");
    EXPECT_TRUE(isShown(*sheet(), "37%"));

    click(*sheet(), "Continue in Background");
    EXPECT_EQ(sheet(), nullptr);
    EXPECT_TRUE(notice().isVisible());
    EXPECT_EQ(notice().sentence().toStdString(), "Separating “song.flac”: 37%");
    click(notice(), "Show");
    EXPECT_FALSE(notice().isVisible());
    sheet()->reject();
    EXPECT_TRUE(isShown(*sheet(), "Cancelling…"));
    endChild(0);
    EXPECT_TRUE(sheet()->isModal());
    EXPECT_TRUE(buttonIn(*sheet(), "Separate").isEnabled());

    click(*sheet(), "Separate");
    endChild(0);
    endChild(0);
    endSeparation();
    EXPECT_EQ(sheet(), nullptr);
    ASSERT_TRUE(state.stemSession());
    EXPECT_EQ(state.stemSession()->stems.size(), StemSession::keys.size());
    EXPECT_EQ(stemSessions.load(song)->size(), StemSession::keys.size());
    EXPECT_TRUE(engine.isInStemMode());
    EXPECT_FALSE(notice().isVisible());

    auto* flow = view.findChild<StemSeparationFlow*>();
    for (const char* folder : { "out/new", "uv" }) {
        flow->exportTo(tools / folder, StemSeparationFlow::Export::stems);
        finishWork();
    }
    EXPECT_TRUE(std::filesystem::exists(tools / "out/new/song Stems/Guitar.wav"));
    EXPECT_NE(view.findChildren<ClosableNotice*>().back()->sentence().indexOf(QLatin1String("could not be copied")), -1);

    // Deleted, and there when they are asked for again.
    state.exitStemMode();
    const auto children = processes.children.size();
    openSheet();
    EXPECT_TRUE(state.stemSession());
    EXPECT_EQ(processes.children.size(), children);
    commands.execute(CommandId::cleanupStems);
    click(view, "Delete Stems");
    EXPECT_FALSE(state.stemSession() || stemSessions.load(song) || std::filesystem::exists(stems));
}

TEST_F(StemsTest, WhatTheSeparationSaysIsSaidInTheUsersLanguage)
{
    Translations translations;
    translations.install("de");
    EXPECT_EQ(
        inUsersLanguage("The song “a %2” cannot be read (%1). Open it again, and try again.\nTraceback: no sentence"),
        QStringLiteral("Das Stück “a %2” lässt sich nicht lesen (%1). Öffnen Sie es neu und versuchen Sie es noch einmal.\n"
                       "Traceback: no sentence"));
    EXPECT_EQ(inUsersLanguage("Fetching the model: 12 MB of 55 MB"), QLatin1String("Das Modell wird geladen: 12 MB von 55 MB"));
}

TEST_F(StemsTest, WhatEndsInTheBackgroundWaitsForTheUser)
{
    for (const bool isSongOpen : { true, false }) {
        openSheet();
        click(*sheet(), "Separate");
        endChild(0);
        endChild(0);
        sheet()->close();
        if (!isSongOpen)
            state.setAudioFileURL("/music/another.flac");
        endSeparation();
        EXPECT_FALSE(state.stemSession());
        EXPECT_TRUE(notice().isVisible());
        EXPECT_EQ(buttonIn(notice(), "Use the Stems").isVisible(), isSongOpen);
        EXPECT_EQ(stemSessions.load(song).has_value(), !isSongOpen);
        click(notice(), isSongOpen ? "Use the Stems" : "Close");
        EXPECT_FALSE(notice().isVisible());
        EXPECT_EQ(state.stemSession().has_value(), isSongOpen);
        state.exitStemMode();
        separator.folderOf(song).remove();
        stemSessions.remove(song);
        std::filesystem::remove_all(tools / "venv");
    }
}

TEST_F(StemsTest, ChannelsSoundAndAreExportedAsTheyAreSetAndAreRemembered)
{
    const StemSession session{ { { "vocals", "/vocals.wav" }, { "bass", "/bass.wav" } } };
    for (const StemSession::Stem& stem : session.stems)
        opener.add(stem.fileURL, sampleRate, 10 * sampleRate, stem.key == "bass" ? 0.25F : 0.125F);
    // The first mixer is the sum.
    const auto volumes = [&] { return std::pair(graph.mixers.at(1)->volume, graph.mixers.at(2)->volume); };
    state.enterStemMode(session, openStemFiles(opener, session.stems));
    const auto* controls = view.findChild<StemControlsView*>();
    ASSERT_NE(controls, nullptr);
    buttonIn(*controls, "Mute").click();
    EXPECT_EQ(volumes(), std::pair(0.0, 1.0));
    EXPECT_TRUE(stemSessions.load(song)->front().isMuted) << "at once";
    commands.execute(CommandId::soloVocals);
    EXPECT_EQ(volumes(), std::pair(1.0, 0.0)) << "solo wins over mute";
    commands.execute(CommandId::soloBass);
    commands.execute(CommandId::soloVocals);
    commands.execute(CommandId::muteVocals);
    state.setStemVolume("bass", 2);
    EXPECT_EQ(volumes(), std::pair(0.0, StemMix::maxVolume));

    opener.add(song, sampleRate, 10 * sampleRate, 1);
    auto* flow = view.findChild<StemSeparationFlow*>();
    for (const char* name : { "song Mix.wav", "song Mix (2).wav" }) {
        flow->exportTo(tools.path(), StemSeparationFlow::Export::mix);
        finishWork();
        std::ifstream file(tools / name, std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        float middle = 0;
        ASSERT_GT(bytes.size(), 10 * sampleRate * 2 * sizeof(float));
        std::memcpy(&middle, &bytes[bytes.size() - 5 * sampleRate * 2 * sizeof(float)], sizeof middle);
        EXPECT_FLOAT_EQ(middle, 0.25 * StemMix::maxVolume);
    }
    flow->exportTo(tools / "uv", StemSeparationFlow::Export::mix);
    finishWork();
    EXPECT_NE(view.findChildren<ExportNotice*>().back()->sentence().indexOf(QLatin1String("could not be written")), -1);
    scheduler.advance(1);
    EXPECT_EQ(stemMixes.load(song), state.stemMix());
    commands.execute(CommandId::mutePiano);
    defaults.setData(std::string("stemMix.") + song,
                     R"({"bass": {"volume": 9, "soloed": true}, "piano": 3, "drums": {"volume": "x"}})");
    EXPECT_EQ(stemMixes.load(song), (StemMix{ { { "bass", { StemMix::maxVolume, true } } } }));
}

}  // namespace
}  // namespace quillet
