// The sheet that opens a song from a web address, as it is used: typing, keys, buttons; the tools are scripted.

#include "app/ui/OpenFromURLSheet.h"

#include "app/ui/DownloadNotice.h"
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "tests/support/FakeProcessRunner.h"
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
    URLDownloader downloader{ processes, tools.path() };
    DownloadSettingsStore settings{ defaults };
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
    [[nodiscard]] QPushButton& button(const char* text) const
    {
        for (auto* candidate : sheet.findChildren<QPushButton*>())
            if (candidate->text() == QLatin1String(text))
                return *candidate;
        throw std::runtime_error(text);
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
    struct Case {
        const char* typed;
        bool isAddress;
    };
    for (const Case& test : { Case{ "  https://example.com/a.mp3 ", true }, Case{ "   ", false }, Case{ "", false },
                              Case{ "--version", false }, Case{ "https://", false } }) {
        type(test.typed);
        EXPECT_EQ(sheet.canSubmit(), test.isAddress) << test.typed;
        EXPECT_EQ(button("Download && Open").isEnabled(), test.isAddress) << test.typed;
    }
    press(Qt::Key_Return);
    EXPECT_TRUE(processes.children.empty());
    // A line copied with its end.
    address().setText(QStringLiteral("https://example.com/a.mp3\r\n"));
    EXPECT_TRUE(sheet.canSubmit());
}

TEST_F(OpenFromURLSheetTest, ADownloadShowsHowFarItIsAndEndsInItsFile)
{
    type(" https://example.com/a.mp3 ");
    press(Qt::Key_Return);
    press(Qt::Key_Return);
    ASSERT_EQ(processes.children.size(), 1);
    EXPECT_EQ(processes.children[0].request.arguments.back(), "https://example.com/a.mp3");
    EXPECT_FALSE(button("Download && Open").isEnabled());
    EXPECT_TRUE(isShown("Connecting…"));
    EXPECT_FALSE(sheet.isModal()) << "the window cannot be used meanwhile";
    const auto* bar = sheet.findChild<QProgressBar*>();
    processes.children[0].say("quillet-progress 1048576 0\n");
    EXPECT_TRUE(isShown("1.0 MB received"));
    EXPECT_EQ(bar->maximum(), 0);
    processes.children[0].say("quillet-progress 1048576 4194304\n");
    EXPECT_TRUE(isShown("25 % of 4.0 MB"));
    EXPECT_EQ(bar->value(), 25);
    processes.children[0].say("quillet-progress 5000000 4194304\n");
    EXPECT_EQ(bar->value(), 100);
    processes.children[0].say("quillet-progress converting\n");
    EXPECT_TRUE(isShown("Converting…"));
    processes.children[0].end(0, "/songs/a.m4a\n");
    EXPECT_EQ(loaded, "/songs/a.m4a");
    EXPECT_FALSE(sheet.isDownloading());
}

TEST_F(OpenFromURLSheetTest, AFailureIsShownAndAnotherAttemptClearsIt)
{
    type("https://example.com/a.mp4");
    press(Qt::Key_Return);
    processes.children.at(0).say("ERROR: <b>not found</b>\n");
    processes.children[0].end(1, {});
    EXPECT_TRUE(isShown("Download failed: ERROR: <b>not found</b>"));
    EXPECT_TRUE(sheet.isVisible());
    EXPECT_FALSE(loaded);
    press(Qt::Key_Backspace);
    press(Qt::Key_3);
    press(Qt::Key_Return);
    ASSERT_EQ(processes.children.size(), 2);
    EXPECT_EQ(processes.children[1].request.arguments.back(), "https://example.com/a.mp3");
    EXPECT_FALSE(isShown("Download failed: ERROR: <b>not found</b>"));
    processes.children[1].end(0, "/songs/a.m4a");
    EXPECT_EQ(loaded, "/songs/a.m4a");

    std::filesystem::remove(tools / "yt-dlp");
    press(Qt::Key_Return);
    EXPECT_TRUE(isShown("yt-dlp not found inside the app bundle."));
}

TEST_F(OpenFromURLSheetTest, AFailureTakesNoKeysFromWhoPlays)
{
    for (const bool plays : { false, true }) {
        type("https://example.com/a.mp3");
        QApplication::setActiveWindow(&sheet);
        press(Qt::Key_Return);
        QApplication::setActiveWindow(plays ? &window : &sheet);
        EXPECT_FALSE(sheet.isModal());
        processes.children.back().end(1, {});
        EXPECT_TRUE(isShown("Download failed (exit code 1)."));
        EXPECT_EQ(sheet.isModal(), !plays);
    }
}

TEST_F(OpenFromURLSheetTest, TheChosenFolderIsUsedAndKept)
{
    const FilePath folder = tools / "my songs";
    std::filesystem::create_directory(folder);
    QTest::mouseClick(&button("Select"), Qt::LeftButton);
    auto* panel = sheet.findChild<QFileDialog*>();
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->fileMode(), QFileDialog::Directory);
    EXPECT_EQ(panel->labelText(QFileDialog::Accept), QStringLiteral("Select"));
    Q_EMIT panel->fileSelected(QString::fromStdString(folder.native()));
    EXPECT_EQ(defaults.string("QLT.downloadDirectory"), folder.native());
    type("https://example.com/a.mp3");
    press(Qt::Key_Return);
    EXPECT_THAT(processes.children.at(0).request.arguments, testing::Contains(folder.native() + "/%(title)s.%(ext)s"));
}

TEST_F(OpenFromURLSheetTest, CancelLeavesTheDownloadToANotice)
{
    press(Qt::Key_Escape);
    EXPECT_EQ(cancels, 1);
    EXPECT_EQ(sheet.releaseDownload(), nullptr);
    for (const bool succeeds : { true, false }) {
        type("https://example.com/a.mp3");
        press(Qt::Key_Return);
        press(Qt::Key_Escape);
        std::optional<FilePath> opened;
        auto* notice =
            new DownloadNotice(theme, sheet.releaseDownload(), [&](const FilePath& file) { opened = file; }, &window);
        notice->show();
        processes.children.back().say("quillet-progress 1 2\n");
        EXPECT_EQ(notice->sentence(), QStringLiteral("The download goes on: 50 % of 1 KB"));
        EXPECT_TRUE(notice->findChildren<QPushButton*>().empty());
        processes.children.back().end(succeeds ? 0 : 1, succeeds ? "/songs/a.m4a" : "");
        EXPECT_EQ(notice->sentence(),
                  succeeds ? QString::fromUtf8("“a.m4a” has been downloaded.")
                           : QStringLiteral("Download failed (exit code 1)."));
        EXPECT_FALSE(opened) << "opened without being asked";
        QTest::mouseClick(notice->findChildren<QPushButton*>().front(), Qt::LeftButton);
        EXPECT_EQ(opened.has_value(), succeeds);
        EXPECT_FALSE(loaded);
        // The notice has been answered.
        const QPointer<DownloadNotice> answered = notice;
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_FALSE(answered);
    }
    // A download that nobody listens to any more.
    type("https://example.com/b.mp3");
    press(Qt::Key_Return);
    (void)sheet.releaseDownload();
    processes.children.back().say("quillet-progress 1 2\n");
    processes.children.back().end(0, "/songs/b.m4a");
    EXPECT_FALSE(loaded);
}

}  // namespace
}  // namespace quillet
