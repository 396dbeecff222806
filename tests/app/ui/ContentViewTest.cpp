// The window's content: its screens, what is dropped on it, and the commands that reach it.

#include "app/ui/ContentView.h"

#include "app/core/Commands.h"
#include "app/ui/DownloadNotice.h"
#include "app/ui/OpenFromURLSheet.h"
#include "tests/app/ui/WindowRig.h"
#include "tests/support/FakeProcessRunner.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDragEnterEvent>
#include <QLabel>
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
    FakeProcessRunner processes;
    TemporaryFolder tools;
    URLDownloader downloader{ processes, background, tools.path() };
    DownloadSettingsStore downloadSettings{ defaults };
    ContentView view{ { state, loader, commands, recentFiles, downloader, downloadSettings, theme, defaults } };

    ContentViewTest()
    {
        for (const char* name : { "uv", "yt-dlp", "ffmpeg" })
            std::filesystem::create_symlink("/bin/sh", tools / name);
        view.resize(1000, 900);
        view.show();
    }

    [[nodiscard]] bool isShown(const char* text) const
    {
        for (const QLabel* label : view.findChildren<QLabel*>())
            if (label->isVisible() && label->text() == QString::fromUtf8(text))
                return true;
        return false;
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

TEST_F(ContentViewTest, OnlyAudioFilesCanBeDroppedAndOnlyTheFirstIsOpened)
{
    struct Case {
        const char* what;
        std::vector<const char*> urls;
        const char* opened;
    };
    for (const Case& test : std::vector<Case>{
             { "three songs", { "file:///a.mp3", "file:///b.wav", "file:///c.aiff" }, "/a.mp3" },
             { "a song behind a picture", { "file:///cover.png", "file:///d.flac" }, "/d.flac" },
             { "a name that is hardly a name", { "file:///caf%C3%A9%20%25.ogg" }, "/caf\xC3\xA9 %.ogg" },
             { "a name that is no text", { "file:///caf%E9.mp3" }, "/caf\xE9.mp3" },
             { "what the open panel lists", { "file://localhost/film.MKV", "file:///a.caf" }, "/film.MKV" },
             { "a list of songs", { "file:///list.pls" }, nullptr },
             { "another machine's", { "file://elsewhere.example/a.mp3" }, nullptr },
             { "a folder", { "file:///music/" }, nullptr },
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
        EXPECT_EQ(seen, test.opened != nullptr ? DropOverlay::Drag::audio : DropOverlay::Drag::unsupported) << test.what;
        EXPECT_EQ(overlay(), DropOverlay::Drag::none);
        EXPECT_EQ(state.audioFileURL(), test.opened != nullptr ? std::optional<FilePath>(test.opened) : std::nullopt)
            << test.what;
    }
}

TEST_F(ContentViewTest, ScreensFollowTheLoadingAndErrorsAreSaid)
{
    state.setLoadingState(LoadingState::loading("Generating waveform... 42%"));
    EXPECT_TRUE(isShown("Generating waveform... 42%"));
    EXPECT_FALSE(isShown("Speed"));
    state.setLoadingState(LoadingState::loaded());
    EXPECT_TRUE(isShown("Speed"));

    view.loadFile("/gone.mp3", RestoreSettings::no);
    finishWork();
    auto* alert = view.findChild<QMessageBox*>();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->text(), QStringLiteral("Could not read audio file duration."));
    EXPECT_EQ(alert->windowTitle(), QStringLiteral("Error"));
    EXPECT_TRUE(isShown("Quillet"));
    EXPECT_FALSE(isShown("Speed"));
}

TEST_F(ContentViewTest, CommandsAreCarriedOutWhileAFileIsLoaded)
{
    commands.execute(CommandId::increaseSpeed);
    commands.execute(CommandId::pitchDown);
    commands.execute(CommandId::toggleLoop);
    commands.execute(CommandId::toggleHold);
    commands.execute(CommandId::holdForward);
    EXPECT_EQ(state.speed(), 105);
    EXPECT_EQ(state.pitch(), -1);
    EXPECT_FALSE(state.loopEnabled());
    EXPECT_DOUBLE_EQ(state.holdPosition(), 0.08);
    commands.execute(CommandId::stopReset);
    EXPECT_FALSE(state.isPlaying());
    state.setLoadingState(LoadingState::idle());
    commands.execute(CommandId::increaseSpeed);
    EXPECT_EQ(state.speed(), 105);

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
    for (auto* button : sheets.front()->findChildren<QAbstractButton*>())
        if (button->text() == QLatin1String("Done"))
            QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_FALSE(state.isShowingHelp());
    commands.execute(CommandId::showHelp);
    EXPECT_TRUE(state.isShowingHelp());
    state.setIsShowingHelp(false);
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

    // After a cancelled sheet the song is there to be opened, and what plays goes on.
    commands.execute(CommandId::openFromURL);
    auto* other = view.findChild<OpenFromURLSheet*>();
    QTest::keyClicks(other->findChild<QLineEdit*>(), QStringLiteral("https://example.com/b.mp3"));
    other->startDownload();
    other->reject();
    processes.children.at(1)->end(0, "/songs/b.m4a");
    EXPECT_EQ(state.audioFileURL(), "/songs/a.m4a");
    EXPECT_EQ(view.findChild<DownloadNotice*>()->sentence(), QString::fromUtf8("“b.m4a” has been downloaded."));
}

}  // namespace
}  // namespace quillet
