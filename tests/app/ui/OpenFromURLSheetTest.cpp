// The sheet that opens a song from a web address, as it is used: typing, keys, buttons; the tools are scripted.

#include "app/ui/OpenFromURLSheet.h"

#include "app/ui/DownloadNotice.h"
#include "tests/app/ui/WindowRig.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QProgressBar>
#include <QTest>

#include <filesystem>
#include <fstream>
#include <optional>

namespace quillet {
namespace {

struct OpenFromURLSheetTest : testing::Test, WindowRig {
    QWidget window;
    std::optional<FilePath> loaded;
    int cancels = 0;
    OpenFromURLSheet sheet{ { downloader, ytDlpUpdater, downloadSettings, theme },
                            { [this](const FilePath& file) { loaded = file; }, [this] { ++cancels; } },
                            &window };

    OpenFromURLSheetTest()
    {
        window.show();
        sheet.open();
    }

    [[nodiscard]] QLineEdit& address() const { return *sheet.findChild<QLineEdit*>(); }
    static bool isAnswered(const QPointer<DownloadNotice>& notice)
    {
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return notice.isNull();
    }
    void type(const char* text)
    {
        address().clear();
        QTest::keyClicks(&address(), QString::fromUtf8(text));
    }
    void submit()
    {
        type("https://example.com/a.mp3");
        press(Qt::Key_Return);
    }
    void press(Qt::Key key) { QTest::keyClick(&address(), key); }
};

TEST_F(OpenFromURLSheetTest, OnlyAnAddressCanBeSubmitted)
{
    for (const char* typed : { "   ", "--version" }) {
        type(typed);
        EXPECT_FALSE(buttonIn(sheet, "Download && Open").isEnabled()) << typed;
    }
    press(Qt::Key_Return);
    EXPECT_TRUE(processes.children.empty());
    // A line copied with its end.
    address().setText(QStringLiteral(" https://example.com/a.mp3\r\n"));
    EXPECT_TRUE(sheet.canSubmit());
}

TEST_F(OpenFromURLSheetTest, ADownloadShowsHowFarItIsAndEndsInItsFile)
{
    type(" https://example.com/a.mp3 ");
    press(Qt::Key_Return);
    press(Qt::Key_Return);
    ASSERT_EQ(processes.children.size(), 1);
    EXPECT_EQ(processes.last().request.arguments.back(), "https://example.com/a.mp3");
    EXPECT_FALSE(buttonIn(sheet, "Download && Open").isEnabled());
    EXPECT_TRUE(isShown(sheet, "Connecting…"));
    EXPECT_FALSE(sheet.isModal()) << "the window cannot be used meanwhile";
    const auto* bar = sheet.findChild<QProgressBar*>();
    processes.last().say("quillet-progress 1048576 0\n");
    EXPECT_TRUE(isShown(sheet, "1.0 MB received"));
    EXPECT_EQ(bar->maximum(), 0);
    processes.last().say("quillet-progress 1048576 4194304\n");
    EXPECT_TRUE(isShown(sheet, "25 % of 4.0 MB"));
    EXPECT_EQ(bar->value(), 25);
    processes.last().say("quillet-progress 5000000 4194304\n");
    EXPECT_EQ(bar->value(), 100);
    processes.last().say("quillet-progress converting\n");
    EXPECT_TRUE(isShown(sheet, "Converting…"));
    processes.last().end(0, "/songs/a.m4a\n");
    EXPECT_EQ(loaded, "/songs/a.m4a");
    EXPECT_FALSE(sheet.isDownloading());
}

TEST_F(OpenFromURLSheetTest, AFailureIsShownAndAnotherAttemptClearsIt)
{
    for (const bool plays : { false, true }) {
        type("https://example.com/a.mp4");
        activate(sheet);
        press(Qt::Key_Return);
        activate(plays ? window : static_cast<QWidget&>(sheet));
        processes.last().say("ERROR: <b>not found</b>\n");
        processes.last().end(1, {});
        EXPECT_TRUE(isShown(sheet, "Download failed: ERROR: <b>not found</b>"));
        EXPECT_EQ(sheet.isModal(), !plays) << "whoever plays keeps the keys";
    }
    // A site may have changed since: the newest downloader is fetched, and used from then on.
    std::ofstream(tools / "fetched-tools.json") << R"({"yt-dlp": "2026.9.1"})";
    for (const char* version : { "2026.8.31", "2026.10.1" }) {
        submit();
        processes.last().end(1, {});
        buttonIn(sheet, "Update yt-dlp").click();
        EXPECT_TRUE(isShown(sheet, "The newest yt-dlp is being fetched…"));
        std::filesystem::create_directories(tools / "newer" / version);
        std::ofstream(tools / "newer" / version / "yt-dlp") << "x";
        processes.last().end(0, version);
        finishWork();
        submit();
        EXPECT_EQ(processes.last().request.arguments.at(3),
                  version == std::string("2026.10.1") ? tools / "newer/2026.10.1/yt-dlp" : tools / "yt-dlp");
        processes.last().end(1, {});
    }
    ytDlpUpdater.undo([](const auto& outcome) { EXPECT_EQ(outcome->version, "2026.9.1"); });
    finishWork();
    submit();
    EXPECT_EQ(processes.last().request.arguments.back(), "https://example.com/a.mp3");
    EXPECT_FALSE(isShown(sheet, "Download failed: ERROR: <b>not found</b>"));
    processes.last().end(0, "/songs/a.m4a");
    EXPECT_EQ(loaded, "/songs/a.m4a");

    std::filesystem::remove(tools / "yt-dlp");
    press(Qt::Key_Return);
    EXPECT_TRUE(isShown(sheet, "yt-dlp not found inside the app bundle."));
}

TEST_F(OpenFromURLSheetTest, TheChosenFolderIsUsedAndKept)
{
    const FilePath folder = "/my songs";
    QTest::mouseClick(&buttonIn(sheet, "Select"), Qt::LeftButton);
    auto* panel = sheet.findChild<QFileDialog*>();
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->fileMode(), QFileDialog::Directory);
    EXPECT_EQ(panel->labelText(QFileDialog::Accept), QStringLiteral("Select"));
    Q_EMIT panel->filesSelected({ QString::fromStdString(folder.native()) });
    EXPECT_EQ(defaults.string("QLT.downloadDirectory"), folder.native());
    submit();
    EXPECT_THAT(processes.last().request.arguments, testing::Contains(folder.native() + "/%(title)s.%(ext)s"));
}

TEST_F(OpenFromURLSheetTest, StopEndsTheDownloadAndAsksAgain)
{
    submit();
    QTest::mouseClick(&buttonIn(sheet, "Stop"), Qt::LeftButton);
    EXPECT_TRUE(processes.last().wasEnded);
    EXPECT_FALSE(buttonIn(sheet, "Stop").isVisible());
    EXPECT_TRUE(sheet.isModal());
    press(Qt::Key_Return);
    EXPECT_EQ(processes.children.size(), 2) << "the address has not been kept";
}

TEST_F(OpenFromURLSheetTest, CancelLeavesTheDownloadToANotice)
{
    press(Qt::Key_Escape);
    EXPECT_EQ(cancels, 1);
    EXPECT_EQ(sheet.releaseDownload(), nullptr);
    std::optional<FilePath> opened;
    submit();
    press(Qt::Key_Escape);
    const QPointer<DownloadNotice> notice =
        new DownloadNotice(theme, sheet.releaseDownload(), [&](const FilePath& file) { opened = file; }, &window);
    processes.last().say("quillet-progress 1 2\n");
    EXPECT_EQ(notice->sentence(), QStringLiteral("The download goes on: 50 % of 1 KB"));
    processes.last().end(0, "/songs/a.m4a");
    EXPECT_EQ(notice->sentence(), QString::fromUtf8("“a.m4a” has been downloaded."));
    EXPECT_FALSE(opened) << "opened without being asked";
    QTest::mouseClick(&buttonIn(*notice, "Open"), Qt::LeftButton);
    EXPECT_EQ(opened, "/songs/a.m4a");
    EXPECT_FALSE(loaded);
    EXPECT_TRUE(isAnswered(notice));
}

TEST_F(OpenFromURLSheetTest, WhatANoticesDownloadHasLeftCanBeDiscarded)
{
    const FilePath unfinished = downloadSettings.downloadDirectory() / ".quillet-f0494a592230";
    for (const bool isStopped : { true, false }) {
        std::filesystem::create_directories(unfinished);
        submit();
        const QPointer<DownloadNotice> notice = new DownloadNotice(theme, sheet.releaseDownload(), {}, &window);
        if (isStopped)
            QTest::mouseClick(&buttonIn(*notice, "Stop"), Qt::LeftButton);
        else
            processes.last().end(1, {});
        EXPECT_EQ(processes.last().wasEnded, isStopped);
        EXPECT_EQ(notice->sentence(),
                  isStopped ? QStringLiteral("The download was stopped. Opening the same address again resumes it.")
                            : QStringLiteral("Download failed (exit code 1)."));
        EXPECT_TRUE(buttonIn(*notice, "Stop").isHidden());
        QTest::mouseClick(&buttonIn(*notice, "Discard"), Qt::LeftButton);
        EXPECT_TRUE(isAnswered(notice));
        background.finish();
        EXPECT_FALSE(std::filesystem::exists(unfinished));
    }
}

TEST_F(OpenFromURLSheetTest, AnErrorReadsAsItsDescription)
{
    using Kind = DownloadError::Kind;
    for (const DownloadError& error :
         { DownloadError{ Kind::processFailed, 7 }, DownloadError{ Kind::processFailed, 1, "50 %1" },
           DownloadError{ Kind::uvNotFound }, DownloadError{ Kind::ytDlpNotFound }, DownloadError{ Kind::ffmpegNotFound },
           DownloadError{ Kind::noOutputFile }, DownloadError{ Kind::launchFailed, 0, "no memory" } })
        EXPECT_EQ(errorText(error).toStdString(), error.description());
}

}  // namespace
}  // namespace quillet
