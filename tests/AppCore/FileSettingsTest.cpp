#include "AppCore/FileSettings.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace quillet {
namespace {

constexpr const char* completeRecord =
    R"({"regionStart":1.5,"regionEnd":2,"speed":75,"speedStep":2.5,"pitch":-100,"eqEnabled":true,)"
    R"("eqGains":[1,-2.5,0],"loopEnabled":false,"loopDelaySeconds":3,"loopDelayMilliseconds":250})";

/// The complete record with one member's value replaced; a null `value` takes the member out.
std::string recordWith(const std::string& name, const char* value)
{
    std::string record = completeRecord;
    const std::size_t member = record.find('"' + name + "\":");
    const std::size_t begin = record.find(':', member) + 1;
    const std::size_t end = record[begin] == '[' ? record.find(']', begin) + 1 : record.find_first_of(",}", begin);
    if (value != nullptr)
        return record.replace(begin, end - begin, value);
    record.erase(member, end - member);
    return record.replace(member, record[member] == ',' ? 1 : 0, "\"unknown\":0,");
}

TEST(FileSettings, WritesAllTenMembersAndReadsThemBack)
{
    const auto json = encodeFileSettings(FileSettings{});
    ASSERT_TRUE(json);
    for (const char* member : { "\"regionStart\":0.0", "\"regionEnd\":0.0", "\"speed\":100.0", "\"speedStep\":5.0",
                                "\"pitch\":0.0", "\"eqEnabled\":false", "\"eqGains\":[0.0,0.0,0.0,0.0,0.0]",
                                "\"loopEnabled\":true", "\"loopDelaySeconds\":0", "\"loopDelayMilliseconds\":0" })
        EXPECT_NE(json->find(member), std::string::npos) << member << " in " << *json;

    const FileSettings odd{ 0.1,
                            59999.999,
                            1.0 / 3,
                            5e-324,
                            -1200,
                            true,
                            { 1.7976931348623157e308, -0.1, 12 },
                            false,
                            std::numeric_limits<std::int64_t>::max(),
                            std::numeric_limits<std::int64_t>::min() };
    EXPECT_EQ(decodeFileSettings(encodeFileSettings(odd).value_or("")), odd);
}

TEST(FileSettings, ANumberThatJsonHasNoFormForMakesNoRecord)
{
    for (const double odd : { std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN() }) {
        FileSettings region;
        region.regionEnd = odd;
        EXPECT_FALSE(encodeFileSettings(region));
        FileSettings gain;
        gain.eqGains.back() = odd;
        EXPECT_FALSE(encodeFileSettings(gain));
    }
}

TEST(FileSettings, ReadsARecordAndIgnoresWhatItDoesNotKnow)
{
    const FileSettings expected{ 1.5, 2, 75, 2.5, -100, true, { 1, -2.5, 0 }, false, 3, 250 };
    EXPECT_EQ(decodeFileSettings(completeRecord), expected);
    std::string extended = completeRecord;
    extended.insert(1, R"("version":[{"a":null}],)");
    EXPECT_EQ(decodeFileSettings(extended), expected);
}

TEST(FileSettings, EveryMemberIsRequired)
{
    for (const char* name : { "regionStart", "regionEnd", "speed", "speedStep", "pitch", "eqEnabled", "eqGains", "loopEnabled",
                              "loopDelaySeconds", "loopDelayMilliseconds" }) {
        EXPECT_FALSE(decodeFileSettings(recordWith(name, nullptr))) << recordWith(name, nullptr);
        EXPECT_FALSE(decodeFileSettings(recordWith(name, "null"))) << name;
        EXPECT_FALSE(decodeFileSettings(recordWith(name, "\"1\""))) << name;
    }
}

TEST(FileSettings, EveryMemberHasItsType)
{
    struct Case {
        const char* name;
        const char* value;
        bool accepted;
    };
    const Case cases[] = {
        { "speed", "75", true },
        { "speed", "7.5e1", true },
        { "speed", "18446744073709551616", true },
        { "speed", "true", false },
        { "speed", "1e999", false },
        { "speed", "NaN", false },
        { "eqEnabled", "1", false },
        { "eqGains", "[]", true },
        { "eqGains", "[1,2,3,4,5,6]", true },
        { "eqGains", "[1,true]", false },
        { "eqGains", "{\"0\":1}", false },
        { "loopDelaySeconds", "-1", true },
        { "loopDelaySeconds", "2.0", true },
        { "loopDelaySeconds", "1e3", true },
        { "loopDelaySeconds", "2.5", false },
        { "loopDelaySeconds", "false", false },
        { "loopDelaySeconds", "9223372036854775807", true },
        { "loopDelaySeconds", "9223372036854775808", false },
        { "loopDelaySeconds", "9223372036854775808.0", false },
        { "loopDelaySeconds", "1e19", false },
        { "loopDelaySeconds", "-9223372036854775808", true },
        { "loopDelaySeconds", "-1e19", false },
    };
    for (const Case& c : cases)
        EXPECT_EQ(decodeFileSettings(recordWith(c.name, c.value)).has_value(), c.accepted) << c.name << ": " << c.value;
    EXPECT_EQ(decodeFileSettings(recordWith("loopDelaySeconds", "1e3"))->loopDelaySeconds, 1000);
}

TEST(FileSettings, WhatIsNoObjectIsNoRecord)
{
    const std::string record = completeRecord;
    for (const std::string& text : { std::string(), std::string("[]"), std::string("null"), '[' + record + ']', record + '}',
                                     record.substr(0, record.size() - 1), std::string("\xFF\x00{", 3) })
        EXPECT_FALSE(decodeFileSettings(text)) << text;
}

}  // namespace
}  // namespace quillet
