#include "app/cli/CommandLine.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace quillet {
namespace {

TEST(CommandLine, OptionsReachTheirPlaces)
{
    const auto command = parseCommandLine({ "render", "--from", "1.5", "--to=3", "--speed", "40", "--pitch", "-300", "--eq",
                                            "-12,0,2.5,0,+12", "--passes", "3", "--delay", "0.25", "\xff.mp3", "-o", "o.wav" });
    ASSERT_TRUE(command) << command.error().message;
    const auto& render = std::get<RenderFile>(*command).options;
    EXPECT_EQ(render.output, "o.wav");
    EXPECT_EQ(render.playback.input.native(), "\xff.mp3");
    EXPECT_EQ(render.playback.fromSeconds, 1.5);
    EXPECT_EQ(render.playback.toSeconds, 3);
    EXPECT_EQ(render.playback.speedPercent, 40);
    EXPECT_EQ(render.playback.pitchCents, -300);
    EXPECT_EQ(render.playback.equalizerGainsDb, (std::array<double, 5>{ -12, 0, 2.5, 0, 12 }));
    EXPECT_EQ(render.playback.passes, 3);
    EXPECT_EQ(render.playback.delaySeconds, 0.25);
    EXPECT_FALSE(render.playback.holdSeconds);
}

TEST(CommandLine, FilesAloneAreOpenedInTheWindow)
{
    const auto files = parseCommandLine({ "cover.png", "\xff.flac", "music/" });
    ASSERT_TRUE(files);
    EXPECT_EQ(std::get<OpenWindow>(*files).files, (std::vector<FilePath>{ "cover.png", "\xff.flac", "music/" }));
    EXPECT_TRUE(std::get<OpenWindow>(*parseCommandLine({})).files.empty());
    EXPECT_TRUE(std::holds_alternative<PrintText>(*parseCommandLine({ "--help" })));
    EXPECT_TRUE(std::holds_alternative<PrintText>(*parseCommandLine({ "render", "--help" })));
    EXPECT_TRUE(std::holds_alternative<PrintText>(*parseCommandLine({ "--version" })));
}

TEST(CommandLine, WrongUsageIsOneSentence)
{
    std::vector<std::vector<std::string>> cases = {
        { "render", "a.wav" },
        { "render", "-o", "o.wav" },
        { "play" },
        { "play", "a.wav", "b.wav" },
    };
    for (const char* options :
         { "--bogus",         "--speed",         "--speed fast",         "--speed 50x",      "--speed=",        "--speed nan",
           "--speed inf",     "--speed 4.99",    "--speed 300.1",        "--pitch -1201",    "--from -1",       "--from 1e300",
           "--from 2 --to 2", "--from 3 --to 2", "--eq 1,2,3",           "--eq 1,2,3,4,5,6", "--eq 1,2,3,4,13", "--eq 1,2,,4,5",
           "--passes 0",      "--passes 1.5",    "--passes 99999999999", "--delay -0.1",     "--hold x" }) {
        std::istringstream words(options);
        cases.push_back({ "play", "a.wav" });
        cases.back().insert(cases.back().end(), std::istream_iterator<std::string>(words), {});
    }
    for (const auto& arguments : cases) {
        const auto command = parseCommandLine(arguments);
        ASSERT_FALSE(command) << testing::PrintToString(arguments);
        const std::string& message = command.error().message;
        EXPECT_TRUE(message.ends_with('.')) << message;
        EXPECT_EQ(message.find('\n'), std::string::npos) << message;
        EXPECT_GT(message.size(), 10U);
    }
}

}  // namespace
}  // namespace quillet
