// Real files through the whole of what opens them: threads, decoder, stores in a database, audio graph.

#include "platform/schedule/VirtualScheduler.h"
#include "tests/support/AudioFixtures.h"
#include "tests/support/SongServices.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace quillet {
namespace {

using testing::Contains;
using testing::Not;

constexpr const char* cachedMessage = "Loading cached waveform...";
constexpr const char* generatingMessage = "Generating waveform...";

/// One run of the program up to its state, over the files in a folder.
struct Program : SongServices<VirtualScheduler> {
    std::vector<std::string> messages;
    std::string error;

    explicit Program(const TemporaryFolder& folder)
        : SongServices(folder)
    {
        graph.start();
        QObject::connect(state.get(), &AppState::loadingStateChanged,
                         [this] { messages.push_back(state->loadingState().message); });
        loader.onError([this](const std::string& message) { error = message; });
    }

    /// Until it is loaded or has failed, and the background is at rest.
    [[nodiscard]] LoadingState::Stage open(const FilePath& path, RestoreSettings restoreSettings = RestoreSettings::no)
    {
        messages.clear();
        error.clear();
        loader.loadFile(path, restoreSettings);
        while (state->loadingState().stage == LoadingState::Stage::loading) {
            scheduler.advance(0);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_TRUE(background.finish(60));
        scheduler.advance(0);
        return state->loadingState().stage;
    }

    /// How loud what is heard in half a second of playing is.
    [[nodiscard]] double loudnessOfPlaying()
    {
        state->togglePlayPause();
        const double loudest = loudnessOf(200);
        state->togglePlayPause();
        // Until it has faded.
        static_cast<void>(loudnessOf(20));
        return loudest;
    }

    [[nodiscard]] double loudnessOf(int blocks)
    {
        double loudest = 0;
        std::array<float, 256> block{};
        for (int i = 0; i < blocks; ++i) {
            output.pull(block);
            scheduler.advance(128.0 / 44'100);
            for (const float sample : block)
                loudest = std::max(loudest, static_cast<double>(std::abs(sample)));
        }
        return loudest;
    }
};

struct OpenSong : testing::Test {
    TemporaryFolder folder;

    FilePath song(const std::string& name, const std::vector<std::string>& arguments, int channels = 2)
    {
        encodeAudio(livelySignal(44'100, channels, 3), folder / name, arguments);
        return folder / name;
    }
};

TEST_F(OpenSong, EveryFormatOpensPlaysAndComesBackAsItWasLeft)
{
    struct Format {
        const char* name;
        std::vector<std::string> arguments;
    };
    const std::vector<std::string> aac{ "-c:a", "aac", "-aac_pns", "0" };
    for (const Format& format : {
             Format{ "a.wav", {} },
             Format{ "a.aiff", {} },
             Format{ "a.flac", {} },
             Format{ "a.mp3", { "-b:a", "128k" } },
             Format{ "a.m4a", aac },
             Format{ "a.ogg", { "-c:a", "libvorbis" } },
             Format{ "a.wma", { "-c:a", "wmav2" } },
             Format{ "a.aac", aac },
             Format{ "adpcm.wav", { "-c:a", "adpcm_ima_wav" } },
             Format{ "\xE9t\xE9 na\xC3\xAFve.wv", {} },
         }) {
        SCOPED_TRACE(format.name);
        const FilePath path = song(format.name, format.arguments);
        std::vector<float> peaks;
        {
            Program program(folder);
            ASSERT_EQ(program.open(path), LoadingState::Stage::loaded) << program.error;
            EXPECT_THAT(program.messages, Contains(generatingMessage));
            EXPECT_THAT(program.messages, Contains("Generating waveform... 100%"));
            EXPECT_NEAR(program.state->audioDuration(), 3, 0.06);
            EXPECT_EQ(program.state->currentSettings(), (FileSettings{ .regionEnd = program.state->audioDuration() }));
            EXPECT_EQ(program.state->recentFiles().front(), path);
            peaks = program.state->waveformSamples();
            EXPECT_EQ(*std::ranges::max_element(peaks), 1.0F);
            EXPECT_GT(program.loudnessOfPlaying(), 0.2);
            program.state->setSpeed(50);
            program.state->setRegion({ 1, program.state->audioDuration() });
            program.state->saveSettingsNow();
        }
        Program program(folder);
        ASSERT_EQ(program.open(path, RestoreSettings::yes), LoadingState::Stage::loaded) << program.error;
        EXPECT_THAT(program.messages, Contains(cachedMessage));
        EXPECT_THAT(program.messages, Not(Contains(generatingMessage)));
        EXPECT_EQ(program.state->waveformSamples(), peaks);
        EXPECT_EQ(program.state->speed(), 50);
        EXPECT_EQ(program.state->regionStart(), 1);
        EXPECT_GT(program.loudnessOfPlaying(), 0.2);
    }
}

TEST_F(OpenSong, StemsThatWereMadeOnceArePlayedAgain)
{
    const FilePath path = song("a.mp3", {});
    const StemSession session{ { { "vocals", song("vocals.wav", {}), false }, { "drums", song("drums.wav", {}), true } } };
    Program program(folder);
    program.stemSessions.save(session, path);
    ASSERT_EQ(program.open(path), LoadingState::Stage::loaded);
    EXPECT_EQ(program.state->stemSession(), session);
    EXPECT_TRUE(program.engine.isInStemMode());
    EXPECT_GT(program.loudnessOfPlaying(), 0.2);
    program.engine.setStemGain("vocals", { .isMuted = true });
    EXPECT_LT(program.loudnessOfPlaying(), 1e-4);
}

TEST_F(OpenSong, WhatIsNoSongIsRefusedInTheSameWords)
{
    std::filesystem::create_symlink(folder / "one", folder / "other");
    std::filesystem::create_symlink(folder / "other", folder / "one");
    ASSERT_EQ(mkfifo((folder / "pipe.wav").c_str(), 0600), 0);
    runFfmpeg({ "-f", "lavfi", "-i", "testsrc2=d=0.2:s=64x48", "-c:v", "mpeg4", folder / "film.mp4" });
    writeBytes(folder / "text.mp3", "Buy milk.\n");
    Program program(folder);
    for (const FilePath& path : { folder / "gone.wav", folder / "one", folder / "pipe.wav", folder / "film.mp4",
                                  folder / "text.mp3", folder.path(), FilePath("/dev/zero"), FilePath() }) {
        EXPECT_EQ(program.open(path), LoadingState::Stage::idle) << path;
        EXPECT_EQ(program.error, "Could not read audio file duration.") << path;
    }
}

/// A WAV file of silence, mono, 8 bits, at 1000 Hz, that takes no room on the disk.
void writeSilence(const FilePath& path, std::uint32_t frames)
{
    const auto little = [](std::uint32_t value, int bytes) {
        std::string text;
        for (int i = 0; i < bytes; ++i)
            text += static_cast<char>(value >> 8 * i & 0xFF);
        return text;
    };
    writeBytes(path,
               "RIFF" + little(36 + frames, 4) + "WAVEfmt " + little(16, 4) + little(1, 2) + little(1, 2) + little(1000, 4)
                   + little(1000, 4) + little(1, 2) + little(8, 2) + "data" + little(frames, 4));
    std::filesystem::resize_file(path, 44 + frames);
}

TEST_F(OpenSong, TheLongestFileLoadsAndAMillisecondMoreIsRefused)
{
    Program program(folder);
    writeSilence(folder / "long.wav", 59'999'999);
    EXPECT_EQ(program.open(folder / "long.wav"), LoadingState::Stage::loaded);
    EXPECT_EQ(program.state->audioDuration(), 59999.999);
    writeSilence(folder / "longer.wav", 60'000'000);
    EXPECT_EQ(program.open(folder / "longer.wav"), LoadingState::Stage::idle);
    EXPECT_EQ(program.error, "File duration exceeds the maximum supported length (999:59.999).");
}

}  // namespace
}  // namespace quillet
