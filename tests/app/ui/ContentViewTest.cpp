// The window's content: its screens, what is dropped on it, and the commands that reach it.

#include "app/ui/ContentView.h"

#include "app/core/Commands.h"
#include "app/core/keyboard/KeyResponderView.h"
#include "app/ui/DownloadNotice.h"
#include "app/ui/FileNames.h"
#include "app/ui/HintNotice.h"
#include "app/ui/OpenFromURLSheet.h"
#include "tests/app/ui/WindowRig.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QDragEnterEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QTest>
#include <QUrl>

#include <string>
#include <vector>

namespace quillet {
namespace {

struct ContentViewTest : testing::Test, WindowRig {
    AppState& state = *WindowRig::state;
    ContentView view{ services };

    ContentViewTest()
    {
        view.resize(1000, 900);
        view.show();
    }

    [[nodiscard]] DropOverlay::Drag overlay() const { return view.findChild<DropOverlay*>()->drag(); }

    /// Drags `data` over the view and drops it; whether the view took it. `seen` is what was shown meanwhile.
    bool drop(const QMimeData& data, DropOverlay::Drag& seen)
    {
        QDragEnterEvent enter({ 300, 300 }, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&view, &enter);
        seen = overlay();
        QDragMoveEvent move({ 310, 300 }, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&view, &move);
        if (!move.isAccepted()) {
            QDragLeaveEvent leave;
            QApplication::sendEvent(&view, &leave);
            return false;
        }
        QDropEvent dropped({ 310, 300 }, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&view, &dropped);
        return dropped.isAccepted();
    }
};

TEST_F(ContentViewTest, OnlyAudioFilesCanBeDroppedAndTheFirstIsOpened)
{
    struct Case {
        const char* what;
        std::vector<const char*> urls;
        const char* opened;
    };
    for (const Case& test : std::vector<Case>{
             { "three songs", { "file:///a.mp3", "file:///b.wav", "file:///c.aiff" }, "/a.mp3" },
             { "a song after a picture", { "file:///cover.png", "file:///d.flac" }, "/d.flac" },
             { "a name that is hardly a name", { "file:///caf%C3%A9%20%25.ogg" }, "/caf\xC3\xA9 %.ogg" },
             { "a name that is no text", { "file:///caf%E9.mp3" }, "/caf\xE9.mp3" },
             { "what the open panel lists", { "file://localhost/film.MKV", "file:///a.caf" }, "/film.MKV" },
             { "a list of songs", { "file:///list.pls" }, nullptr },
             { "another machine's", { "file://elsewhere.example/a.mp3" }, nullptr },
             { "a text", { "file:///notes.txt" }, nullptr },
             { "a web address", { "https://example.org/a.mp3" }, nullptr },
             { "no file at all", {}, nullptr },
         }) {
        QMimeData data;
        QByteArray list;
        for (const char* url : test.urls)
            list.append(url).append("\r\n");
        if (list.isEmpty())
            data.setText(QStringLiteral("some words"));
        else
            data.setData(QStringLiteral("text/uri-list"), list);
        state.setAudioFileURL(std::nullopt);
        DropOverlay::Drag seen{};
        EXPECT_EQ(drop(data, seen), test.opened != nullptr) << test.what;
        // Where there are several they are looked at first.
        if (test.opened != nullptr && !state.audioFileURL()) {
            background.finish(background.waiting() - 1);
            scheduler.advance(0);
        }
        EXPECT_EQ(seen, test.opened != nullptr ? DropOverlay::Drag::audio : DropOverlay::Drag::unsupported) << test.what;
        EXPECT_EQ(overlay(), DropOverlay::Drag::none);
        EXPECT_EQ(state.audioFileURL(), test.opened != nullptr ? std::optional<FilePath>(test.opened) : std::nullopt)
            << test.what;
    }
    // The last several of them.
    EXPECT_THAT(songs.songs(), testing::ElementsAre("/film.MKV", "/a.caf"));

    // A folder may be dropped; what is in it is found out then.
    QMimeData data;
    data.setData(QStringLiteral("text/uri-list"), QByteArray::fromStdString("file://" + tools.path().native() + "/"));
    DropOverlay::Drag seen{};
    EXPECT_TRUE(drop(data, seen));
    finishWork();
    const auto alerts = view.findChildren<QMessageBox*>();
    ASSERT_FALSE(alerts.empty());
    EXPECT_EQ(alerts.back()->text(), QStringLiteral("There are no songs in “%1”.").arg(fileName(tools.path())));
}

TEST_F(ContentViewTest, ScreensFollowTheLoadingAndErrorsAreSaid)
{
    state.setLoadingState(LoadingState::loading("Generating waveform... 42%"));
    EXPECT_TRUE(isShown(view, "Generating waveform... 42%"));
    EXPECT_FALSE(isShown(view, "Speed"));
    state.setLoadingState(LoadingState::loaded());
    EXPECT_TRUE(isShown(view, "Speed"));

    view.loadFile("/gone.mp3", RestoreSettings::no);
    finishWork();
    auto* alert = view.findChild<QMessageBox*>();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->text(), QStringLiteral("Could not read audio file duration."));
    EXPECT_EQ(alert->windowTitle(), QStringLiteral("Error"));
    EXPECT_TRUE(isShown(view, "Quillet"));
    EXPECT_FALSE(isShown(view, "Speed"));
}

TEST_F(ContentViewTest, HintsNameTheKeysOfTheUserAndGoAtEscape)
{
    auto* notice = view.findChild<HintNotice*>();
    EXPECT_TRUE(notice->sentence().contains(QStringLiteral("[ and ]")));
    keyMap.choose(CommandId::markRegionStart, { { 0, Qt::Key_F7 }, 0 });
    EXPECT_TRUE(notice->sentence().contains(QStringLiteral("F7 and ]")));
    ASSERT_TRUE(notice->isVisible());
    QTest::keyClick(view.findChild<KeyResponderView*>(), Qt::Key_Escape);
    EXPECT_FALSE(notice->isVisible());
    EXPECT_EQ(defaults.boolean(Hints::doneKey), true);
}

TEST_F(ContentViewTest, CommandsActOnALoadedFileOnly)
{
    for (const auto& stage : { LoadingState::loaded(), LoadingState::idle() }) {
        state.setLoadingState(stage);
        for (const CommandId id : { CommandId::increaseSpeed, CommandId::pitchDown, CommandId::toggleLoop })
            commands.execute(id);
        EXPECT_EQ(state.speed(), 105);
        EXPECT_EQ(state.pitch(), -1);
        EXPECT_FALSE(state.loopEnabled());
        state.setPlaybackPosition(3);
        commands.execute(CommandId::stopReset);
        EXPECT_EQ(state.playbackPosition(), stage.stage == LoadingState::Stage::loaded ? 0 : 3);
    }
    recentFiles.push("/x.mp3");
    commands.execute(CommandId::clearRecents);
    finishWork();
    EXPECT_TRUE(recentFiles.all().empty());
}

TEST_F(ContentViewTest, HelpOpensOnceAndCloses)
{
    commands.execute(CommandId::showHelp);
    commands.execute(CommandId::showHelp);
    const auto sheets = view.findChildren<QDialog*>();
    ASSERT_EQ(sheets.size(), 1);
    QTest::mouseClick(&buttonIn(*sheets.front(), "Done"), Qt::LeftButton);
    EXPECT_FALSE(state.isShowingHelp());
}

TEST_F(ContentViewTest, ADownloadedSongIsOpenedWithTheDefaults)
{
    commands.execute(CommandId::openFromURL);
    commands.execute(CommandId::openFromURL);
    const auto sheets = view.findChildren<OpenFromURLSheet*>();
    ASSERT_EQ(sheets.size(), 1);
    const QPointer<OpenFromURLSheet> sheet = sheets.front();
    QTest::keyClicks(sheet->findChild<QLineEdit*>(), QStringLiteral("https://example.com/a.mp3"));
    sheet->startDownload();
    EXPECT_EQ(processes.children.size(), 1);
    commands.execute(CommandId::openFromURL);
    EXPECT_EQ(view.findChildren<OpenFromURLSheet*>().size(), 1);
    state.setSpeed(50);
    processes.children.at(0)->end(0, "/songs/a.m4a");
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(sheet);
    EXPECT_EQ(state.audioFileURL(), "/songs/a.m4a");
    EXPECT_EQ(state.loadingState().stage, LoadingState::Stage::loading);

    // A cancelled sheet leaves a notice.
    commands.execute(CommandId::openFromURL);
    auto* other = view.findChild<OpenFromURLSheet*>();
    QTest::keyClicks(other->findChild<QLineEdit*>(), QStringLiteral("https://example.com/b.mp3"));
    other->startDownload();
    other->reject();
    EXPECT_NE(view.findChild<DownloadNotice*>(), nullptr);
}

}  // namespace
}  // namespace quillet
