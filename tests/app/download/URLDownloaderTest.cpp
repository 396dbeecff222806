// Downloads with scripted tools in the place of the real ones.

#include "app/download/URLDownloader.h"

#include "app/download/DownloadSettingsStore.h"
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "platform/files/UserDirectories.h"
#include "tests/support/FakeProcessRunner.h"
#include "tests/support/ManualRunner.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <optional>

namespace quillet {
namespace {

struct URLDownloaderTest : testing::Test {
    TemporaryFolder tools;
    FakeProcessRunner processes;
    ManualRunner background;
    URLDownloader downloader{ processes, background, tools.path() };
    std::vector<DownloadProgress> progress;
    std::function<void()> onProgress = [] { };
    std::optional<URLDownloader::Outcome> outcome;

    URLDownloaderTest()
    {
        for (const char* name : { "uv", "yt-dlp", "ffmpeg" })
            write(name, std::filesystem::perms(name == std::string_view("yt-dlp") ? 0644 : 0755));
    }

    void write(const char* name, std::filesystem::perms mode) const
    {
        std::ofstream(tools / name) << "a tool";
        std::filesystem::permissions(tools / name, mode);
    }

    std::expected<std::unique_ptr<RunningProcess>, DownloadError> download(const FilePath& directory = "/songs")
    {
        return downloader.download(*WebAddress::parse("https://example.com/watch?v=1&list=2"), directory,
                                   { [this](const DownloadProgress& told) {
                                        progress.push_back(told);
                                        onProgress();
                                    },
                                     [this](const URLDownloader::Outcome& end) { outcome = end; } });
    }

    [[nodiscard]] std::string answer() const { return *outcome ? (*outcome)->native() : outcome->error().description(); }
};

TEST_F(URLDownloaderTest, TheToolIsCalledWithExactlyTheseArguments)
{
    const auto running = download("/my songs/\xC3\xA9tudes 'n' 100%");
    EXPECT_EQ(processes.last().request.executable, tools / "uv");
    EXPECT_THAT(processes.last().request.arguments,
                testing::ElementsAre("run", "--python", "3.12", (tools / "yt-dlp").native(), "-x", "--no-playlist",
                                     "--audio-format", "m4a", "--ffmpeg-location", (tools / "ffmpeg").native(), "--print",
                                     "after_move:filepath", "-o", "/my songs/\xC3\xA9tudes 'n' 100%/%(title)s.%(ext)s",
                                     "https://example.com/watch?v=1&list=2"));
}

TEST_F(URLDownloaderTest, TheEndOfTheToolDecides)
{
    struct Case {
        int status;
        const char* output;
        const char* errors;
        /// A path, or the sentence of the failure.
        const char* answer;
    };
    for (const Case& test : {
             Case{ 0, "  \n/songs/My Song.m4a \n", "WARNING: old\n", "/songs/My Song.m4a" },
             Case{ 0, "/songs/a.m4a\n/songs/b.m4a\n", "", "/songs/a.m4a\n/songs/b.m4a" },
             Case{ 0, "/songs/\xF0\x9F\x8E\xB8.m4a\n", "\377", "/songs/\xF0\x9F\x8E\xB8.m4a" },
             Case{ 0, " \n\t", "", "Download succeeded but no output file path was reported." },
             Case{ 0, "/songs/\377.m4a", "", "Download succeeded but no output file path was reported." },
             Case{ 1, "/songs/a.m4a", "\n first\nsecond \n\n", "Download failed: first\nsecond" },
             Case{ 2, "", " \n", "Download failed (exit code 2)." },
             Case{ 2, "", "\377", "Download failed (exit code 2)." },
         }) {
        const auto running = download();
        processes.last().say(test.errors);
        EXPECT_FALSE(outcome.has_value());
        processes.last().end(test.status, test.output);
        EXPECT_EQ(answer(), test.answer);
        EXPECT_EQ(outcome->has_value(), answer().starts_with('/')) << test.answer;
        outcome.reset();
    }
    const auto running = download();
    processes.last().handlers->ended(std::unexpected(ProcessStartError{ "No such interpreter" }));
    EXPECT_EQ(answer(), "No such interpreter");
}

TEST_F(URLDownloaderTest, TheFirstToolThatIsMissingIsNamed)
{
    const auto failure = [this] { return download().error().description(); };
    write("ffmpeg", std::filesystem::perms(0644));
    EXPECT_EQ(failure(), "ffmpeg not found inside the app bundle.");
    std::filesystem::remove(tools / "yt-dlp");
    EXPECT_EQ(failure(), "yt-dlp not found inside the app bundle.");
    std::filesystem::remove(tools / "uv");
    std::filesystem::create_directory(tools / "uv");
    EXPECT_EQ(failure(), "uv not found inside the app bundle.");

    URLDownloader nowhere(processes, background, {});
    EXPECT_EQ(nowhere.bundleHelperDirectory().error().description(), "uv not found inside the app bundle.");
}

TEST_F(URLDownloaderTest, ProgressIsTakenOutOfWhatTheToolSays)
{
    const auto running = download();
    for (const char byte :
         std::string("Reading\nquillet-progress 1024 0\nquillet-progress 2048 99999999999\nquillet-progress many\n"
                     "quillet-progress\nquillet-progress converting\nERROR: quillet-progress 1 2\nlast"))
        processes.last().say({ &byte, 1 });
    using Step = DownloadProgress::Step;
    EXPECT_THAT(progress,
                testing::ElementsAre(DownloadProgress{ Step::receiving, 1024, 0 },
                                     DownloadProgress{ Step::receiving, 2048, 99999999999 },
                                     DownloadProgress{ Step::converting }));
    processes.last().end(1, {});
    EXPECT_EQ(answer(), "Download failed: Reading\nquillet-progress\nERROR: quillet-progress 1 2\nlast");
}

TEST_F(URLDownloaderTest, NothingIsHeardOfADownloadThatWasStopped)
{
    std::unique_ptr<RunningProcess> running;
    onProgress = [&] { running.reset(); };
    running = std::move(download().value());
    processes.last().say("quillet-progress 1 2\nquillet-progress 2 2\n");
    EXPECT_TRUE(processes.last().wasEnded);
    EXPECT_EQ(progress.size(), 1);
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
