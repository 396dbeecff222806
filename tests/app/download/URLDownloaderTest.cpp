// Downloads with scripted tools in the place of the real ones, as real child processes.

#include "app/download/URLDownloader.h"

#include "app/download/DownloadSettingsStore.h"
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "platform/files/UserDirectories.h"
#include "platform/process/QtProcessRunner.h"
#include "tests/support/EventLoop.h"
#include "tests/support/FakeProcessRunner.h"
#include "tests/support/ManualRunner.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <sstream>

namespace quillet {
namespace {

struct URLDownloaderTest : testing::Test {
    EventLoop loop;
    TemporaryFolder tools;
    QtProcessRunner processes;
    ManualRunner background;
    URLDownloader downloader{ processes, background, tools.path() };
    const WebAddress address = *WebAddress::parse("https://example.com/watch?v=1&list=2");

    URLDownloaderTest()
    {
        write("uv", "exit 0");
        write("yt-dlp", "", false);
        write("ffmpeg", "");
    }

    void write(const char* name, const std::string& script, bool isExecutable = true) const
    {
        const FilePath file = tools / name;
        std::filesystem::remove(file);
        std::ofstream(file) << "#!/bin/sh\n" << script << "\n";
        std::filesystem::permissions(file, std::filesystem::perms(isExecutable ? 0755 : 0644));
    }

    URLDownloader::Outcome download(const FilePath& directory = "/songs")
    {
        std::optional<URLDownloader::Outcome> result;
        const auto running =
            downloader.download(address, directory, { {}, [&](const URLDownloader::Outcome& outcome) { result = outcome; } });
        if (!running)
            return std::unexpected(running.error());
        EXPECT_TRUE(loop.runUntil([&] { return result.has_value(); }));
        return *result;
    }
};

TEST_F(URLDownloaderTest, TheToolIsCalledWithExactlyTheseArguments)
{
    write("uv", R"(for word; do echo "<$word>" >> ")" + (tools / "arguments").native() + R"("; done; echo /songs/a.m4a)");
    const FilePath directory = "/my songs/\xC3\xA9tudes 'n' 100%";
    ASSERT_TRUE(download(directory));
    std::ostringstream arguments;
    arguments << std::ifstream(tools / "arguments").rdbuf();
    const std::string folder = tools.path().native();
    EXPECT_EQ(arguments.str(),
              "<run>\n<--python>\n<3.12>\n<" + folder
                  + "/yt-dlp>\n<-x>\n<--no-playlist>\n<--audio-format>\n<m4a>\n"
                    "<--ffmpeg-location>\n<"
                  + folder + "/ffmpeg>\n<--print>\n<after_move:filepath>\n<-o>\n<" + directory.native()
                  + "/%(title)s.%(ext)s>\n<https://example.com/watch?v=1&list=2>\n");
}

TEST_F(URLDownloaderTest, TheEndOfTheToolDecides)
{
    struct Case {
        const char* script;
        /// A path, or the sentence of the failure.
        const char* answer;
    };
    for (const Case& test : {
             Case{ R"(printf '  \n/songs/My Song.m4a \n')", "/songs/My Song.m4a" },
             Case{ R"(printf '/songs/a.m4a\n'; echo 'WARNING: old' >&2)", "/songs/a.m4a" },
             Case{ R"(printf '/songs/a.m4a\n/songs/b.m4a\n')", "/songs/a.m4a\n/songs/b.m4a" },
             Case{ R"(printf '/songs/\360\237\216\270.m4a\n'; printf '\377' >&2)", "/songs/\xF0\x9F\x8E\xB8.m4a" },
             Case{ "exit 0", "Download succeeded but no output file path was reported." },
             Case{ R"(printf ' \n\t')", "Download succeeded but no output file path was reported." },
             Case{ R"(printf '/songs/\377.m4a')", "Download succeeded but no output file path was reported." },
             Case{ "echo 'ERROR: no such song' >&2; exit 1", "Download failed: ERROR: no such song" },
             Case{ R"(printf '\n first\nsecond \n\n' >&2; echo /songs/a.m4a; exit 1)", "Download failed: first\nsecond" },
             Case{ "exit 2", "Download failed (exit code 2)." },
             Case{ R"(printf '\377' >&2; exit 2)", "Download failed (exit code 2)." },
             Case{ "kill -KILL $$", "Download failed (exit code 9)." },
             Case{ "head -c 300000 /dev/zero | tr '\\0' x >&2; head -c 300000 /dev/zero; exit 7", nullptr },
         }) {
        write("uv", test.script);
        const auto outcome = download();
        const std::string answer = outcome ? outcome->native() : outcome.error().description();
        EXPECT_EQ(answer, test.answer != nullptr ? test.answer : "Download failed: " + std::string(300000, 'x')) << test.script;
        EXPECT_EQ(outcome.has_value(), answer.starts_with('/')) << test.script;
    }
}

TEST_F(URLDownloaderTest, TheFirstToolThatIsMissingIsNamed)
{
    const auto failure = [this] { return download().error().description(); };
    write("ffmpeg", "", false);
    EXPECT_EQ(failure(), "ffmpeg not found inside the app bundle.");
    std::filesystem::remove(tools / "yt-dlp");
    EXPECT_EQ(failure(), "yt-dlp not found inside the app bundle.");
    write("uv", "", false);
    EXPECT_EQ(failure(), "uv not found inside the app bundle.");
    std::filesystem::remove(tools / "uv");
    std::filesystem::create_directory(tools / "uv");
    EXPECT_EQ(failure(), "uv not found inside the app bundle.");

    URLDownloader nowhere(processes, background, {});
    EXPECT_EQ(nowhere.bundleHelperDirectory().error().description(), "uv not found inside the app bundle.");
}

TEST_F(URLDownloaderTest, AToolThatCannotBeStartedIsTheSystemsWord)
{
    std::ofstream(tools / "uv") << "#!/no/such/interpreter\n";
    const auto outcome = download();
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.error().kind, DownloadError::Kind::launchFailed);
    EXPECT_THAT(outcome.error().description(), testing::HasSubstr("No such file"));
}

TEST_F(URLDownloaderTest, ProgressIsTakenOutOfWhatTheToolSays)
{
    FakeProcessRunner scripted;
    URLDownloader told(scripted, background, tools.path());
    std::vector<DownloadProgress> seen;
    std::optional<URLDownloader::Outcome> result;
    const auto running = told.download(address, "/songs",
                                       { [&](const DownloadProgress& progress) { seen.push_back(progress); },
                                         [&](const URLDownloader::Outcome& outcome) { result = outcome; } });
    const std::string said = "Reading\nquillet-progress 1024 0\nquillet-progress 2048 99999999999\nquillet-progress many\n"
                             "quillet-progress\nquillet-progress converting\nERROR: quillet-progress 1 2\nlast";
    for (const char byte : said)
        scripted.last().say({ &byte, 1 });
    using Step = DownloadProgress::Step;
    EXPECT_THAT(seen,
                testing::ElementsAre(DownloadProgress{ Step::receiving, 1024, 0 },
                                     DownloadProgress{ Step::receiving, 2048, 99999999999 },
                                     DownloadProgress{ Step::converting }));
    scripted.last().end(1, {});
    EXPECT_EQ(result->error().description(), "Download failed: Reading\nquillet-progress\nERROR: quillet-progress 1 2\nlast");
}

TEST_F(URLDownloaderTest, NothingIsHeardOfADownloadThatWasStopped)
{
    FakeProcessRunner scripted;
    URLDownloader told(scripted, background, tools.path());
    std::unique_ptr<RunningProcess> running;
    int answers = 0;
    const auto stop = [&](const auto&) {
        ++answers;
        running.reset();
    };
    running = std::move(told.download(address, "/songs", { stop, stop }).value());
    scripted.last().say("quillet-progress 1 2\nquillet-progress 2 2\n");
    EXPECT_TRUE(scripted.last().wasEnded);
    EXPECT_EQ(answers, 1);
}

TEST_F(URLDownloaderTest, TheFolderIsTheChosenOneOrTheDesktops)
{
    MemoryDefaultsDomain defaults;
    const DownloadSettingsStore settings(defaults);
    setenv("XDG_CONFIG_HOME", tools.path().c_str(), 1);
    EXPECT_EQ(settings.downloadDirectory(), homeDirectory() / "Downloads");
    const auto named = [&](const char* folder) {
        std::ofstream(tools / "user-dirs.dirs") << "XDG_MUSIC_DIR=\"$HOME/Musik\"\nXDG_DOWNLOAD_DIR=\"" << folder << "\"\n";
        return settings.downloadDirectory();
    };
    EXPECT_EQ(named("$HOME/T\xC3\xA9l\xC3\xA9 chargements"), homeDirectory() / "T\xC3\xA9l\xC3\xA9 chargements");
    EXPECT_EQ(named("/srv/songs/"), "/srv/songs");
    EXPECT_EQ(named("$HOME/"), homeDirectory() / "Downloads");
    defaults.setString("QLT.downloadDirectory", "/my songs/\xC3\xA9");
    EXPECT_EQ(settings.downloadDirectory(), "/my songs/\xC3\xA9");
    unsetenv("XDG_CONFIG_HOME");
}

}  // namespace
}  // namespace quillet
