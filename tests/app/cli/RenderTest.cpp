// The program itself rendering real files: lengths, places, identity, and what it says of bad input.

#include "platform/media/FfmpegAudioFile.h"
#include "tests/support/AudioFixtures.h"
#include "tests/support/Command.h"
#include "tests/support/SignalAnalysis.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <span>

namespace quillet {
namespace {

struct Render : testing::Test {
    TemporaryFolder folder;

    [[nodiscard]] std::string path(const std::string& name) const { return (folder / name).native(); }

    /// An audio file made by ffmpeg from one of its signal sources.
    std::string make(const std::string& name, const std::string& source, const std::vector<std::string>& options = {})
    {
        std::vector<std::string> arguments{ "-f", "lavfi", "-i", source };
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.push_back(path(name));
        runFfmpeg(arguments);
        return path(name);
    }

    static CommandResult quillet(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), QUILLET_PROGRAM);
        return runCommand(arguments);
    }

    /// The left channel of what `arguments` render; empty on failure.
    std::vector<float> render(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "render");
        arguments.insert(arguments.end(), { "-o", path("out.wav") });
        const CommandResult result = quillet(arguments);
        EXPECT_EQ(result.status, 0) << result.errorOutput;
        EXPECT_EQ(result.errorOutput, "");
        return left(path("out.wav"));
    }

    static std::vector<float> left(const std::string& file)
    {
        const auto audio = FfmpegAudioFileOpener().open(file);
        if (!audio) {
            ADD_FAILURE() << describe(audio.error(), file);
            return {};
        }
        std::vector<float> stereo(static_cast<std::size_t>(2 * (*audio)->length()));
        stereo.resize(static_cast<std::size_t>(2 * (*audio)->read(0, stereo)));
        return channelOf(stereo, 0);
    }
};

double seconds(const std::vector<float>& samples, int sampleRate) { return static_cast<double>(samples.size()) / sampleRate; }

TEST_F(Render, FilesOfAnyRateHaveTheLengthAndPitchAskedFor)
{
    for (const int sampleRate : { 8000, 44100, 192000 }) {
        const std::string file = make("tone.wav", "sine=frequency=441:duration=3:sample_rate=" + std::to_string(sampleRate));
        const auto heard = render({ file, "--from", "0.5", "--to", "2.5", "--speed", "80", "--pitch", "1200" });
        EXPECT_NEAR(seconds(heard, sampleRate), 2.5, 0.005) << sampleRate;
        const auto middle = std::span(heard).subspan(heard.size() / 5, heard.size() * 3 / 5);
        EXPECT_NEAR(centsBetween(toneFrequencyHz(middle, sampleRate), 882), 0, 2) << sampleRate;
    }
}

TEST_F(Render, AtNormalSpeedTheFileComesOutUnchangedWhateverItsName)
{
    const std::string file = make("noise.flac", "anoisesrc=duration=2:sample_rate=44100:seed=5:amplitude=0.9");
    const std::string name = path("\xff\xfe\n\"'\xc3.flac");
    std::filesystem::rename(file, name);
    const auto source = left(name);
    const auto heard = render({ name, "--from", "0.25", "--to", "1.75" });
    ASSERT_NEAR(seconds(heard, 44100), 1.5, 0.005);
    for (std::size_t i = 300; i < 66150 - 300; ++i)
        ASSERT_EQ(heard[i], source[11025 + i]) << i;
}

TEST_F(Render, EveryKindOfFileHasItsFramesItsToneAndTheSongsTags)
{
    const std::string file = make("song.flac", "sine=frequency=441:duration=4:sample_rate=44100",
                                  { "-metadata", "title=Ein Ständchen", "-metadata", "artist=Die Probe" });
    struct Case {
        const char* name;
        int rate;
        double tolerance;
    };
    for (const Case& c : { Case{ "out.flac", 44100, 1.0 / (1 << 22) },
                           { "out.MP3", 44100, 0.02 },
                           { "out.m4a", 44100, 0.02 },
                           { "out.opus", 48000, 0.05 } }) {
        SCOPED_TRACE(c.name);
        const CommandResult result =
            quillet({ "render", file, "--from", "1", "--to", "2", "--passes", "3", "-o", path(c.name) });
        ASSERT_EQ(result.status, 0) << result.errorOutput;
        const auto audio = FfmpegAudioFileOpener().open(path(c.name));
        ASSERT_TRUE(audio);
        EXPECT_EQ((*audio)->sampleRate(), c.rate);
        // An AAC decoder hands out the whole of the last packet; the file says where the sound ends in it.
        const bool isAac = std::string_view(c.name).ends_with(".m4a");
        EXPECT_NEAR(static_cast<double>((*audio)->length()), 3 * c.rate, isAac ? 1023 : 0);
        EXPECT_EQ((*audio)->tags().title, "Ein Ständchen");
        EXPECT_EQ((*audio)->tags().artist, "Die Probe");
        const auto heard = left(path(c.name));
        const auto plain = left(file);
        EXPECT_NEAR(centsBetween(toneFrequencyHz(std::span(heard).subspan(9000, 60000), c.rate), 441), 0, 1);
        for (std::size_t i = 5000; c.rate == 44100 && i < 40000; ++i)
            ASSERT_NEAR(heard[i], plain[44100 + i], c.tolerance) << "in its place";
    }
    const CommandResult refused = quillet({ "render", file, "-o", path("nowhere/out.flac") });
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.errorOutput.find("its folder does not exist"), std::string::npos) << refused.errorOutput;
}

TEST_F(Render, PassesPausesAndHoldHaveExactlyTheirFrames)
{
    const std::string file = make("tone.wav", "sine=frequency=441:duration=2");
    struct Case {
        std::vector<std::string> options;
        std::int64_t frames;
        std::int64_t passes;
    };
    const Case cases[] = {
        { { "--from", "1", "--to", "1.3", "--passes", "3" }, 39690, 3 },
        { { "--from", "1", "--to", "1.05", "--passes", "10", "--speed", "300" }, 7350, 10 },
        { { "--from", "1", "--to", "1.005", "--passes", "8" }, 8 * 220, 8 },
        { { "--from", "1", "--to", "1.0001", "--passes", "300", "--speed", "33.3" }, 3604, 4 },
        { { "--from", "0.5", "--to", "0.6", "--speed", "5" }, 88200, 1 },
        { { "--hold", "1", "--passes", "5", "--speed", "50" }, 35280, 5 },
        { { "--to", "1", "--passes", "2", "--delay", "0.75" }, 44100 * 11 / 4, 2 },
    };
    for (Case entry : cases) {
        entry.options.insert(entry.options.begin(), file);
        const auto heard = render(entry.options);
        EXPECT_LE(std::abs(std::ssize(heard) - entry.frames), entry.passes) << testing::PrintToString(entry.options);
    }
    const auto paused = render({ file, "--to", "1", "--passes", "2", "--delay", "0.75" });
    const auto silent = [](float sample) { return sample == 0; };
    EXPECT_TRUE(std::all_of(paused.begin() + 44100, paused.begin() + 44100 + 33075, silent));
    EXPECT_FALSE(std::all_of(paused.begin() + 44100 * 18 / 10, paused.begin() + 44100 * 19 / 10, silent));
}

TEST_F(Render, BadInputIsOneSentenceAndLeavesNothing)
{
    const std::string song = make("song.wav", "sine=duration=1");
    struct Case {
        std::vector<std::string> arguments;
        int status;
    };
    for (Case entry : {
             Case{ { path("missing.mp3") }, 1 },
             Case{ { song, "--from", "1" }, 1 },
             Case{ { song, "--hold", "7" }, 1 },
             Case{ { song, "--from", "0.5", "--to", "0.50001" }, 1 },
             Case{ { song, "--speed", "zwölf" }, 2 },
             Case{ { song, "-o", path("nowhere/out.wav") }, 1 },
             Case{ { song, "-o", song }, 1 },
             Case{ { song, "-o", "/dev/full" }, 1 },
         }) {
        entry.arguments.insert(entry.arguments.begin(), "render");
        if (std::ranges::count(entry.arguments, "-o") == 0)
            entry.arguments.insert(entry.arguments.end(), { "-o", path("out.wav") });
        const CommandResult result = quillet(entry.arguments);
        EXPECT_EQ(result.status, entry.status) << testing::PrintToString(entry.arguments);
        EXPECT_EQ(std::ranges::count(result.errorOutput, '\n'), 1) << result.errorOutput;
        EXPECT_EQ(result.output, "");
        EXPECT_FALSE(std::filesystem::exists(folder / "out.wav"));
    }
    EXPECT_EQ(left(song).size(), 44100U) << "the song must survive being named as the output";
}

TEST_F(Render, AnInterruptionLeavesNoFile)
{
    const std::string song = make("song.wav", "sine=duration=600");
    const CommandResult stopped =
        runCommand({ "timeout", "-s", "INT", "0.4", QUILLET_PROGRAM, "render", song, "-o", path("out.wav"), "--speed", "50" });
    EXPECT_EQ(stopped.status, 124) << stopped.errorOutput;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

}  // namespace
}  // namespace quillet
