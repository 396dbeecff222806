// The program itself printing and drawing waveforms of real files and saying what they are made of, and what it says of bad
// input.

#include "tests/support/AudioFixtures.h"
#include "tests/support/Command.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <QImage>

#include <string>
#include <vector>

namespace quillet {
namespace {

struct Waveform : testing::Test {
    TemporaryFolder folder;

    static CommandResult quillet(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), { QUILLET_PROGRAM, "waveform" });
        return runCommand(arguments);
    }

    /// A second of loud sound after one of silence.
    FilePath song(const std::string& name)
    {
        TestSignal signal = livelySignal(44'100, 2, 2);
        std::fill_n(signal.samples.begin(), 2 * 44'100, 0.0F);
        encodeAudio(signal, folder / name, {});
        return folder / name;
    }
};

TEST_F(Waveform, IsPrintedAndDrawn)
{
    const FilePath path = song("\xE9.flac");
    const CommandResult printed = quillet({ path, "--json" });
    ASSERT_EQ(printed.status, 0) << printed.errorOutput;
    const auto object = nlohmann::json::parse(printed.output);
    EXPECT_EQ(object["durationSeconds"].get<double>(), 2);
    const auto peaks = object["peaks"].get<std::vector<float>>();
    ASSERT_NEAR(static_cast<double>(peaks.size()), 2000, 50);
    EXPECT_LT(peaks[500], 0.05);
    EXPECT_EQ(*std::max_element(peaks.begin(), peaks.end()), 1);

    const FilePath picture = folder / "\xE9.png";
    EXPECT_EQ(quillet({ path, "--png", picture }).errorOutput, "");
    QImage image;
    const std::string bytes = readBytes(picture);
    ASSERT_TRUE(image.loadFromData(reinterpret_cast<const uchar*>(bytes.data()), static_cast<int>(bytes.size()), "PNG"));
    const auto coloured = [&](int firstColumn, int endColumn) {
        int count = 0;
        for (int x = firstColumn; x < endColumn; ++x)
            for (int y = 0; y < image.height(); ++y)
                count += image.pixelColor(x, y) != image.pixelColor(0, 0) ? 1 : 0;
        return count;
    };
    EXPECT_GT(coloured(image.width() / 2 + 20, image.width()), 20 * coloured(0, image.width() / 2 - 20));
}

TEST_F(Waveform, InfoCountsEveryFrame)
{
    const FilePath path = folder / "\xE9.mp3";
    encodeAudio(livelySignal(48'000, 1, 1.2345), path, {});
    const CommandResult printed = runCommand({ QUILLET_PROGRAM, "info", path, "--json" });
    ASSERT_EQ(printed.status, 0) << printed.errorOutput;
    const auto object = nlohmann::json::parse(printed.output);
    EXPECT_EQ(object["frames"], 59'256);
    EXPECT_EQ(object["sampleRate"], 48'000);
    EXPECT_EQ(object["channels"], 1);
    EXPECT_EQ(runCommand({ QUILLET_PROGRAM, "info", path }).output,
              "frames: 59256\nsample rate: 48000 Hz\nchannels: 1\nduration: 1.234 s\n");
    EXPECT_EQ(runCommand({ QUILLET_PROGRAM, "info", folder / "gone.wav" }).status, 1);
}

TEST_F(Waveform, BadInputIsOneSentenceAndLeavesNoPicture)
{
    const FilePath path = song("a.wav");
    writeBytes(folder / "text.mp3", "Buy milk.\n");
    struct Case {
        std::vector<std::string> arguments;
        int status;
        const char* says;
    };
    for (const Case& test : std::vector<Case>{
             { { folder / "gone.wav" }, 1, "does not exist" },
             { { folder / "text.mp3", "--png", folder / "text.png" }, 1, "not an audio file" },
             { { path, "--png", folder / "no" / "such.png" }, 1, "its folder does not exist" },
             { { path, "--png", folder / "a.png", "--json" }, 2, "--json" },
             { {}, 2, "IN" },
         }) {
        const CommandResult result = quillet(test.arguments);
        EXPECT_EQ(result.status, test.status);
        EXPECT_EQ(result.output, "");
        EXPECT_NE(result.errorOutput.find(test.says), std::string::npos) << result.errorOutput;
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "text.png"));
    EXPECT_EQ(quillet({ path, "--png", "/dev/full" }).status, 1);
}

}  // namespace
}  // namespace quillet
