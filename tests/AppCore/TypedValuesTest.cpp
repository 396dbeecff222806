#include "AppCore/PitchInputParser.h"
#include "AppCore/RegionClamp.h"
#include "AppCore/SpeedInputParser.h"
#include "AppCore/TimeIntervalComponents.h"
#include "tests/support/Command.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quillet {
namespace {

using namespace std::string_view_literals;

struct Entry {
    const char* text;
    double anchor;
    double expected;
};

TEST(TypedValues, SpeedIsAbsoluteOrRelativeWithoutAPercentSign)
{
    const Entry entries[] = { { "75", 100, 75 },    { " \t75 ", 100, 75 },   { "75%", 100, 75 },    { "%7%5", 100, 75 },
                              { "+10", 100, 110 },  { "-10", 100, 90 },      { "+10%", 100, 10 },   { "-10%", 100, 5 },
                              { "+-10", 100, 90 },  { "--10", 100, 110 },    { "400", 100, 300 },   { "2", 100, 5 },
                              { "+250", 100, 300 }, { "-1e1", 100, 90 },     { "1e2", 50, 100 },    { "7.25", 100, 7.25 },
                              { "7.", 100, 7 },     { ".5e2", 100, 50 },     { "1e999", 100, 300 }, { "1e-999", 100, 5 },
                              { "+inf", 100, 300 }, { "-Infinity", 100, 5 }, { "NaN", 100, 300 } };
    for (const Entry& e : entries)
        EXPECT_EQ(SpeedInputParser::parse(e.text, e.anchor), e.expected) << '"' << e.text << "\" at " << e.anchor;
    const std::string_view rejected[] = { "7,5", "abc",  "",     " ",      "%",      "75 %", "+ 10",  "\n75", "75\n",
                                          "7 5", "0x4B", "+0x1", "nan(1)", "75\0"sv, "1e",   "1'000", "+" };
    for (const std::string_view text : rejected)
        EXPECT_FALSE(SpeedInputParser::parse(text, 100)) << '"' << text << '"';
}

TEST(TypedValues, ALeadingMinusLowersThePitch)
{
    const Entry entries[] = { { "300", 0, 300 },   { "+100", 200, 300 },  { " -100\t", 200, 100 },  { "-100", 0, -100 },
                              { "5000", 0, 1200 }, { "+50", 1180, 1200 }, { "-5000", 1200, -1200 }, { "--50", 100, 150 },
                              { "12.5", 0, 12.5 }, { "nan", 0, 1200 },    { "-inf", 0, -1200 } };
    for (const Entry& e : entries)
        EXPECT_EQ(PitchInputParser::parse(e.text, e.anchor), e.expected) << '"' << e.text << "\" at " << e.anchor;
    const Entry musical[] = { { "+2 st", 0, 200 },        { "-1.5ST", 100, -50 },   { "2 st", 700, 200 },
                              { "-50 ct", 20, -30 },      { "13 st", 0, 1200 },     { "A=440", 300, 0 },
                              { "a = 880 hz", 0, -1200 }, { "A=443", 0, -11.7638 }, { "A=1e-9", 0, 1200 },
                              { "A=432Hz", 0, 31.7667 } };
    for (const Entry& e : musical)
        EXPECT_NEAR(PitchInputParser::parse(e.text, e.anchor).value_or(-9999), e.expected, 1e-4) << e.text;
    const std::string_view rejected[] = { "A=",      "A=0", "A=-440", "A=inf", "A=nan", "443=A", "A 443", "st", "+ st",
                                          "2 st st", "-",   "50c",    "50%",   "12,5",  "",      "- 50",  "−50" };
    for (const std::string_view text : rejected)
        EXPECT_FALSE(PitchInputParser::parse(text, 100)) << '"' << text << '"';
}

TEST(TypedValues, NumbersHaveAPointInALocaleWithACommaToo)
{
    const TemporaryFolder folder;
    const std::string locale = "de_DE.UTF-8";
    const CommandResult made = runCommand({ "localedef", "-i", "de_DE", "-f", "UTF-8", (folder / locale).native() });
    ASSERT_EQ(made.status, 0) << made.errorOutput;
    ASSERT_EQ(setenv("LOCPATH", folder.path().c_str(), 1), 0);
    ASSERT_NE(std::setlocale(LC_ALL, locale.c_str()), nullptr);
    EXPECT_EQ(std::strtod("7,5", nullptr), 7.5);
    EXPECT_EQ(SpeedInputParser::parse("7.5", 100), 7.5);
    EXPECT_EQ(SpeedInputParser::parse("7,5", 100), std::nullopt);
    EXPECT_EQ(PitchInputParser::format(1200), "+1200");
    std::setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
}

TEST(TypedValues, PitchIsShownInWholeCents)
{
    const std::pair<double, const char*> cases[] = {
        { 0, "0" }, { 0.9, "0" }, { -0.9, "0" }, { 1, "+1" }, { 100, "+100" }, { -250.7, "-250" }, { 199.999, "+199" },
    };
    for (const auto& [cents, text] : cases)
        EXPECT_EQ(PitchInputParser::format(cents), text);
    const std::pair<double, const char*> described[] = {
        { 0, "" },        { -0.04, "" },       { 0.06, "+0.1 ct" },          { -11.7636, "-11.8 ct" }, { 50, "+50 ct" },
        { 200, "+2 st" }, { 199.96, "+2 st" }, { -150.25, "-1 st 50.3 ct" }, { 1200, "+12 st" },
    };
    for (const auto& [cents, text] : described)
        EXPECT_EQ(PitchInputParser::describe(cents), text);
}

TEST(TypedValues, TimesAreCutOffAtMilliseconds)
{
    const std::pair<double, TimeIntervalComponents> cases[] = {
        { 0, { 0, 0, 0 } },         { 83.456, { 1, 23, 456 } },      { 1.005, { 0, 1, 4 } },
        { 0.999, { 0, 0, 999 } },   { 0.9999, { 0, 0, 999 } },       { 6000, { 100, 0, 0 } },
        { 61.2345, { 1, 1, 234 } }, { 59999.999, { 999, 59, 999 } }, { -61.5, { -1, -1, -500 } },
    };
    for (const auto& [seconds, components] : cases)
        EXPECT_EQ(TimeIntervalComponents::fromSeconds(seconds), components) << seconds;
    EXPECT_EQ((TimeIntervalComponents{ 2, 3, 250 }).asTimeInterval(), 123.25);
    EXPECT_EQ((TimeIntervalComponents{ 0, 75, 1500 }).asTimeInterval(), 76.5);
}

TEST(TypedValues, ANumberWithoutAnIntegerStopsTheProgram)
{
    constexpr double infinite = std::numeric_limits<double>::infinity();
    EXPECT_DEATH((void)PitchInputParser::format(std::numeric_limits<double>::quiet_NaN()), "requirement broken");
    EXPECT_DEATH((void)PitchInputParser::format(0x1p63), "requirement broken");
    EXPECT_DEATH((void)TimeIntervalComponents::fromSeconds(-infinite), "requirement broken");
    EXPECT_DEATH((void)TimeIntervalComponents::fromSeconds(1e16), "requirement broken");
    EXPECT_EQ(PitchInputParser::format(-0x1p63), "-9223372036854775808");
}

TEST(TypedValues, RegionsKeepTheirGapAndTheirFile)
{
    using namespace RegionClamp;
    EXPECT_DOUBLE_EQ(clampStart(5, 5), 4.99);
    EXPECT_EQ(clampStart(-1, 3), 0);
    EXPECT_EQ(clampStart(2, 3), 2);
    EXPECT_EQ(clampStart(1, 0.005), 0);
    EXPECT_DOUBLE_EQ(clampEnd(1, 2, 10), 2.01);
    EXPECT_EQ(clampEnd(12, 2, 10), 10);
    EXPECT_EQ(clampEnd(3, 2, 10), 3);
    EXPECT_EQ(clampEnd(9, 9.995, 10), 10);
    EXPECT_EQ(clampNewRegion(3, 7, 10), (TimeRange{ 3, 7 }));
    EXPECT_EQ(clampNewRegion(-2, 4, 10), (TimeRange{ 0, 4 }));
    EXPECT_EQ(clampNewRegion(15, 4, 10), (TimeRange{ 4, 10 }));
    EXPECT_EQ(clampNewRegion(4, 4, 10), (TimeRange{ 4, 4 }));
}

}  // namespace
}  // namespace quillet
