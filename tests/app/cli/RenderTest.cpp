// The program itself rendering real files: lengths, places, identity, and what it says of bad input.

#include "platform/media/FfmpegAudioFile.h"
#include "tests/support/Command.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numbers>

namespace quillet {
namespace {

struct Render : testing::Test {
    TemporaryFolder folder;

    [[nodiscard]] std::string path(const std::string& name) const { return (folder / name).native(); }

    /// An audio file made by ffmpeg from one of its signal sources.
    std::string make(const std::string& name, const std::string& source, std::vector<std::string> options = {})
    {
        std::vector<std::string> command{ "ffmpeg", "-v", "error", "-f", "lavfi", "-i", source };
        command.insert(command.end(), options.begin(), options.end());
        command.push_back(path(name));
        const CommandResult made = runCommand(command);
        EXPECT_EQ(made.status, 0) << made.errorOutput;
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
        std::vector<float> channel;
        for (std::size_t i = 0; i < stereo.size(); i += 2)
            channel.push_back(stereo[i]);
        return channel;
    }
};

double seconds(const std::vector<float>& samples, int sampleRate) { return static_cast<double>(samples.size()) / sampleRate; }

TEST_F(Render, FilesOfAnyRateHaveTheLengthAndPitchAskedFor)
{
    struct Case {
        const char* name;
        int sampleRate;
        std::vector<std::string> options;
    };
    const Case cases[] = {
        { "8000-1-u8.wav", 8000, { "-ar", "8000", "-c:a", "pcm_u8" } },
        { "192000-2-f32.wav", 192000, { "-ar", "192000", "-c:a", "pcm_f32le" } },
        { "cbr.mp3", 44100, { "-b:a", "128k" } },
        { "opus.opus", 48000, {} },
    };
    for (const Case& format : cases) {
        const std::string file = make(format.name, "sine=frequency=441:duration=3:sample_rate=44100", format.options);
        const auto heard = render({ file, "--from", "0.5", "--to", "2.5", "--speed", "80" });
        EXPECT_NEAR(seconds(heard, format.sampleRate), 2.5, 0.005) << format.name;
        // Zero crossings count the periods of a clean tone.
        const auto first = heard.begin() + std::ssize(heard) / 5;
        const auto last = heard.begin() + std::ssize(heard) * 4 / 5;
        int crossings = 0;
        for (auto sample = first + 1; sample != last; ++sample)
            crossings += *(sample - 1) < 0 && *sample >= 0 ? 1 : 0;
        EXPECT_NEAR(crossings / (static_cast<double>(last - first) / format.sampleRate), 441, 1) << format.name;
    }
}

TEST_F(Render, AtNormalSpeedTheFileComesOutUnchanged)
{
    const std::string file = make("noise.flac", "anoisesrc=duration=2:sample_rate=44100:seed=5:amplitude=0.9");
    const auto source = left(file);
    const auto heard = render({ file, "--from", "0.25", "--to", "1.75" });
    ASSERT_NEAR(seconds(heard, 44100), 1.5, 0.005);
    for (std::size_t i = 300; i < 66150 - 300; ++i)
        ASSERT_EQ(heard[i], source[11025 + i]) << i;
}

TEST_F(Render, SlowedClicksAreWhereTheStretcherPutsThemOffline)
{
    const std::string file = make("clicks.wav", "aevalsrc='0.9*lt(mod(t+0.3,0.7),0.001)':duration=3:sample_rate=44100");
    const auto heard = render({ file, "--speed", "25" });
    ASSERT_EQ(runCommand({ "rubberband", "-q", "-3", "-t", "4", file, path("reference.wav") }).status, 0);
    const auto reference = left(path("reference.wav"));
    const auto loudest = [](const std::vector<float>& samples, double around) {
        const auto first = samples.begin() + static_cast<std::int64_t>((around - 0.2) * 44100);
        return std::ranges::max_element(first, first + 17640, {}, [](float v) { return std::abs(v); }) - samples.begin();
    };
    for (const double click : { 0.4, 1.1, 1.8, 2.5 })
        EXPECT_NEAR(static_cast<double>(loudest(heard, 4 * click)), static_cast<double>(loudest(reference, 4 * click)), 220)
            << click;
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
    std::ofstream(path("text.mp3")) << "this is no music\n";
    std::ofstream(path("empty.mp3")).flush();
    make("header.wav", "sine=duration=1", { "-t", "0" });
    make("silent.mp4", "testsrc=duration=0.2:size=64x64");
    std::filesystem::create_directory(folder / "folder");
    struct Case {
        std::vector<std::string> arguments;
        int status;
    };
    const Case cases[] = {
        { { path("missing.mp3") }, 1 },
        { { path("folder") }, 1 },
        { { path("empty.mp3") }, 1 },
        { { path("text.mp3") }, 1 },
        { { path("header.wav") }, 1 },
        { { path("silent.mp4") }, 1 },
        { { "/dev/zero" }, 1 },
        { { song, "--from", "1" }, 1 },
        { { song, "--hold", "7" }, 1 },
        { { song, "--from", "0.5", "--to", "0.50001" }, 1 },
        { { song, "--from", "0.5", "--to", "0.5" }, 2 },
        { { song, "--speed", "zwölf" }, 2 },
    };
    for (Case entry : cases) {
        entry.arguments.insert(entry.arguments.begin(), "render");
        entry.arguments.insert(entry.arguments.end(), { "-o", path("out.wav") });
        const CommandResult result = quillet(entry.arguments);
        EXPECT_EQ(result.status, entry.status) << entry.arguments[1] << ": " << result.errorOutput;
        EXPECT_EQ(std::ranges::count(result.errorOutput, '\n'), 1) << result.errorOutput;
        EXPECT_EQ(result.output, "");
        EXPECT_FALSE(std::filesystem::exists(folder / "out.wav")) << entry.arguments[1];
    }
    for (const std::string& output : { path("nowhere/out.wav"), path("folder"), song, std::string("/dev/full") }) {
        const CommandResult result = quillet({ "render", song, "-o", output });
        EXPECT_EQ(result.status, 1) << output;
        EXPECT_EQ(std::ranges::count(result.errorOutput, '\n'), 1) << result.errorOutput;
    }
    EXPECT_EQ(left(song).size(), 44100U) << "the song must survive being named as the output";
}

TEST_F(Render, ADamagedFileRendersWhatCanBeDecoded)
{
    const std::string whole = make("whole.mp3", "sine=frequency=441:duration=4", { "-b:a", "128k" });
    const auto size = std::filesystem::file_size(whole);
    std::filesystem::resize_file(whole, size / 2);
    EXPECT_NEAR(seconds(render({ whole }), 44100), 2, 0.1);
}

TEST_F(Render, InterruptionAndAFullDiskLeaveNoFile)
{
    const std::string song = make("song.wav", "sine=duration=600");
    const auto names = [this] {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
            found.push_back(entry.path().filename());
        return found;
    };
    const CommandResult stopped =
        runCommand({ "timeout", "-s", "INT", "0.4", QUILLET_PROGRAM, "render", song, "-o", path("out.wav"), "--speed", "50" });
    EXPECT_EQ(stopped.status, 124) << stopped.errorOutput;
    EXPECT_EQ(names(), std::vector<std::string>{ "song.wav" });
    const CommandResult full = runCommand({ "bash", "-c", "ulimit -f 1000; trap '' XFSZ; exec \"$@\"", "-", QUILLET_PROGRAM,
                                            "render", song, "-o", path("out.wav") });
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(std::ranges::count(full.errorOutput, '\n'), 1) << full.errorOutput;
    EXPECT_EQ(names(), std::vector<std::string>{ "song.wav" });
}

TEST_F(Render, AnyByteMayStandInAName)
{
    const std::string song = make("song.wav", "sine=duration=0.2");
    for (const std::string name : { "\xff\xfe\n\"'\xc3.wav", "-o.wav", "http:x.wav", "concat:a|b.wav" }) {
        std::filesystem::copy_file(song, folder / name);
        EXPECT_NEAR(seconds(render({ path(name) }), 44100), 0.2, 0.005) << name;
    }
}

}  // namespace
}  // namespace quillet
