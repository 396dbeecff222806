#include "app/cli/CommandLine.h"

#include <gtest/gtest.h>

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

TEST(CommandLine, AFileAloneIsOpenedInTheWindow)
{
    const auto file = parseCommandLine({ "song.mp3" });
    ASSERT_TRUE(file);
    EXPECT_EQ(std::get<OpenWindow>(*file).file, "song.mp3");
    EXPECT_EQ(std::get<OpenWindow>(*parseCommandLine({})).file, std::nullopt);
    EXPECT_TRUE(std::holds_alternative<PrintText>(*parseCommandLine({ "--help" })));
    EXPECT_TRUE(std::holds_alternative<PrintText>(*parseCommandLine({ "render", "--help" })));
    EXPECT_TRUE(std::holds_alternative<PrintText>(*parseCommandLine({ "--version" })));
}

TEST(CommandLine, WrongUsageIsOneSentence)
{
    const std::vector<std::vector<std::string>> cases = {
        { "render", "a.wav" },
        { "render", "-o", "o.wav" },
        { "play" },
        { "play", "a.wav", "--bogus" },
        { "play", "a.wav", "b.wav" },
        { "a.wav", "b.wav" },
        { "play", "a.wav", "--speed" },
        { "play", "a.wav", "--speed", "fast" },
        { "play", "a.wav", "--speed", "50x" },
        { "play", "a.wav", "--speed", "" },
        { "play", "a.wav", "--speed", "nan" },
        { "play", "a.wav", "--speed", "inf" },
        { "play", "a.wav", "--speed", "4.99" },
        { "play", "a.wav", "--speed", "300.1" },
        { "play", "a.wav", "--pitch", "-1201" },
        { "play", "a.wav", "--from", "-1" },
        { "play", "a.wav", "--from", "1e300" },
        { "play", "a.wav", "--from", "2", "--to", "2" },
        { "play", "a.wav", "--from", "3", "--to", "2" },
        { "play", "a.wav", "--eq", "1,2,3" },
        { "play", "a.wav", "--eq", "1,2,3,4,5,6" },
        { "play", "a.wav", "--eq", "1,2,3,4,13" },
        { "play", "a.wav", "--eq", "1,2,,4,5" },
        { "play", "a.wav", "--passes", "0" },
        { "play", "a.wav", "--passes", "1.5" },
        { "play", "a.wav", "--passes", "99999999999" },
        { "play", "a.wav", "--delay", "-0.1" },
        { "play", "a.wav", "--hold", "x" },
    };
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
