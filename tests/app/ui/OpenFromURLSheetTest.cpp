// The sheet that opens a song from a web address, as it is used: typing, keys, buttons; the tools are scripted.

#include "app/ui/OpenFromURLSheet.h"

#include "app/ui/DownloadNotice.h"
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "tests/support/FakeProcessRunner.h"
#include "tests/support/ManualRunner.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>

#include <optional>

namespace quillet {
namespace {

struct OpenFromURLSheetTest : testing::Test {
    TemporaryFolder tools;
    MemoryDefaultsDomain defaults;
    FakeProcessRunner processes;
    ManualRunner background;
    URLDownloader downloader{ processes, background, tools.path() };
    DownloadSettingsStore settings = [this] {
        defaults.setString("QLT.downloadDirectory", tools.path().native());
        return DownloadSettingsStore(defaults);
    }();
    ThemeSource theme;
    QWidget window;
    std::optional<FilePath> loaded;
    int cancels = 0;
    OpenFromURLSheet sheet{ { downloader, settings, theme },
                            { [this](const FilePath& file) { loaded = file; }, [this] { ++cancels; } },
                            &window };

    OpenFromURLSheetTest()
    {
        for (const char* name : { "uv", "yt-dlp", "ffmpeg" })
            std::filesystem::create_symlink("/bin/sh", tools / name);
        window.show();
        sheet.open();
    }

    [[nodiscard]] QLineEdit& address() const { return *sheet.findChild<QLineEdit*>(); }
    [[nodiscard]] QPushButton& button(const char* text, const QWidget* within = nullptr) const
    {
        for (auto* candidate : (within != nullptr ? within : &sheet)->findChildren<QPushButton*>())
            if (candidate->text() == QLatin1String(text))
                return *candidate;
        throw std::runtime_error(text);
    }
    static bool isAnswered(const QPointer<DownloadNotice>& notice)
    {
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return notice.isNull();
    }
    [[nodiscard]] bool isShown(const char* text) const
    {
        for (const auto* label : sheet.findChildren<QLabel*>())
            if (label->isVisible() && label->text() == QString::fromUtf8(text))
                return true;
        return false;
    }
    void type(const char* text)
    {
        address().clear();
        QTest::keyClicks(&address(), QString::fromUtf8(text));
    }
    void press(Qt::Key key) { QTest::keyClick(&address(), key); }
};

TEST_F(OpenFromURLSheetTest, OnlyAnAddressCanBeSubmitted)
{
    for (const char* typed : { "   ", "--version" }) {
        type(typed);
        EXPECT_FALSE(button("Download && Open").isEnabled()) << typed;
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
    EXPECT_FALSE(button("Download && Open").isEnabled());
    EXPECT_TRUE(isShown("Connecting…"));
    EXPECT_FALSE(sheet.isModal()) << "the window cannot be used meanwhile";
    const auto* bar = sheet.findChild<QProgressBar*>();
    processes.last().say("quillet-progress 1048576 0\n");
    EXPECT_TRUE(isShown("1.0 MB received"));
    EXPECT_EQ(bar->maximum(), 0);
    processes.last().say("quillet-progress 1048576 4194304\n");
    EXPECT_TRUE(isShown("25 % of 4.0 MB"));
    EXPECT_EQ(bar->value(), 25);
    processes.last().say("quillet-progress 5000000 4194304\n");
    EXPECT_EQ(bar->value(), 100);
    processes.last().say("quillet-progress converting\n");
    EXPECT_TRUE(isShown("Converting…"));
    processes.last().end(0, "/songs/a.m4a\n");
    EXPECT_EQ(loaded, "/songs/a.m4a");
    EXPECT_FALSE(sheet.isDownloading());
}

TEST_F(OpenFromURLSheetTest, AFailureIsShownAndAnotherAttemptClearsIt)
{
    for (const bool plays : { false, true }) {
        type("https://example.com/a.mp4");
        QApplication::setActiveWindow(&sheet);
        press(Qt::Key_Return);
        QApplication::setActiveWindow(plays ? &window : &sheet);
        processes.last().say("ERROR: <b>not found</b>\n");
        processes.last().end(1, {});
        EXPECT_TRUE(isShown("Download failed: ERROR: <b>not found</b>"));
        EXPECT_EQ(sheet.isModal(), !plays) << "whoever plays keeps the keys";
    }
    type("https://example.com/a.mp3");
    press(Qt::Key_Return);
    EXPECT_EQ(processes.last().request.arguments.back(), "https://example.com/a.mp3");
    EXPECT_FALSE(isShown("Download failed: ERROR: <b>not found</b>"));
    processes.last().end(0, "/songs/a.m4a");
    EXPECT_EQ(loaded, "/songs/a.m4a");

    std::filesystem::remove(tools / "yt-dlp");
    press(Qt::Key_Return);
    EXPECT_TRUE(isShown("yt-dlp not found inside the app bundle."));
}

TEST_F(OpenFromURLSheetTest, TheChosenFolderIsUsedAndKept)
{
    const FilePath folder = "/my songs";
    QTest::mouseClick(&button("Select"), Qt::LeftButton);
    auto* panel = sheet.findChild<QFileDialog*>();
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->fileMode(), QFileDialog::Directory);
    EXPECT_EQ(panel->labelText(QFileDialog::Accept), QStringLiteral("Select"));
    Q_EMIT panel->fileSelected(QString::fromStdString(folder.native()));
    EXPECT_EQ(defaults.string("QLT.downloadDirectory"), folder.native());
    type("https://example.com/a.mp3");
    press(Qt::Key_Return);
    EXPECT_THAT(processes.last().request.arguments, testing::Contains(folder.native() + "/%(title)s.%(ext)s"));
}

TEST_F(OpenFromURLSheetTest, StopEndsTheDownloadAndAsksAgain)
{
    type("https://example.com/a.mp3");
    press(Qt::Key_Return);
    QTest::mouseClick(&button("Stop"), Qt::LeftButton);
    EXPECT_TRUE(processes.last().wasEnded);
    EXPECT_FALSE(button("Stop").isVisible());
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
    type("https://example.com/a.mp3");
    press(Qt::Key_Return);
    press(Qt::Key_Escape);
    const QPointer<DownloadNotice> notice =
        new DownloadNotice(theme, sheet.releaseDownload(), [&](const FilePath& file) { opened = file; }, &window);
    processes.last().say("quillet-progress 1 2\n");
    EXPECT_EQ(notice->sentence(), QStringLiteral("The download goes on: 50 % of 1 KB"));
    processes.last().end(0, "/songs/a.m4a");
    EXPECT_EQ(notice->sentence(), QString::fromUtf8("“a.m4a” has been downloaded."));
    EXPECT_FALSE(opened) << "opened without being asked";
    QTest::mouseClick(&button("Open", notice), Qt::LeftButton);
    EXPECT_EQ(opened, "/songs/a.m4a");
    EXPECT_FALSE(loaded);
    EXPECT_TRUE(isAnswered(notice));
}

TEST_F(OpenFromURLSheetTest, WhatANoticesDownloadHasLeftCanBeDiscarded)
{
    const FilePath unfinished = settings.downloadDirectory() / ".quillet-f0494a592230";
    for (const bool isStopped : { true, false }) {
        std::filesystem::create_directories(unfinished);
        type("https://example.com/a.mp3");
        press(Qt::Key_Return);
        const QPointer<DownloadNotice> notice = new DownloadNotice(theme, sheet.releaseDownload(), {}, &window);
        if (isStopped)
            QTest::mouseClick(&button("Stop", notice), Qt::LeftButton);
        else
            processes.last().end(1, {});
        EXPECT_EQ(processes.last().wasEnded, isStopped);
        EXPECT_EQ(notice->sentence(),
                  isStopped ? QStringLiteral("The download was stopped. Opening the same address again resumes it.")
                            : QStringLiteral("Download failed (exit code 1)."));
        EXPECT_TRUE(button("Stop", notice).isHidden());
        QTest::mouseClick(&button("Discard", notice), Qt::LeftButton);
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
