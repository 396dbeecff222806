#include "AppCore/FileSettings.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string>
#include <vector>

namespace quillet {
namespace {

const std::map<std::string, std::string> completeRecord{
    { "regionStart", "1.5" },    { "regionEnd", "2" },
    { "speed", "75" },           { "speedStep", "2.5" },
    { "pitch", "-100" },         { "eqEnabled", "true" },
    { "eqGains", "[1,-2.5,0]" }, { "loopEnabled", "false" },
    { "loopDelaySeconds", "3" }, { "loopDelayMilliseconds", "250" },
};

std::string written(const std::map<std::string, std::string>& members)
{
    std::string record = "{";
    for (const auto& [name, value] : members)
        record.append(record.size() > 1 ? ",\"" : "\"").append(name).append("\":").append(value);
    return record + '}';
}

std::optional<FileSettings> readWith(const std::string& name, const std::string& value)
{
    auto members = completeRecord;
    members[name] = value;
    return decodeFileSettings(written(members));
}

TEST(FileSettings, WritesAllTenMembersAndReadsThemBack)
{
    const auto json = encodeFileSettings(FileSettings{});
    ASSERT_TRUE(json);
    for (const char* member : { "\"regionStart\":0.0", "\"regionEnd\":0.0", "\"speed\":100.0", "\"speedStep\":5.0",
                                "\"pitch\":0.0", "\"eqEnabled\":false", "\"eqGains\":[0.0,0.0,0.0,0.0,0.0]",
                                "\"loopEnabled\":true", "\"loopDelaySeconds\":0", "\"loopDelayMilliseconds\":0" })
        EXPECT_NE(json->find(member), std::string::npos) << member << " in " << *json;

    using Integers = std::numeric_limits<std::int64_t>;
    const FileSettings odd{ 0.1,   59999.999,       1.0 / 3,        5e-324, -1200, true, { 1.7976931348623157e308, -0.1, 12 },
                            false, Integers::max(), Integers::min() };
    EXPECT_EQ(decodeFileSettings(encodeFileSettings(odd).value_or("")), odd);
}

TEST(FileSettings, ANumberThatJsonHasNoFormForMakesNoRecord)
{
    for (const double odd : { std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN() }) {
        EXPECT_FALSE(encodeFileSettings({ .regionEnd = odd }));
        EXPECT_FALSE(encodeFileSettings({ .eqGains = { 0, odd } }));
    }
}

TEST(FileSettings, EveryMemberIsRequiredInItsTypeAndNoOther)
{
    EXPECT_EQ(decodeFileSettings(written(completeRecord)),
              (FileSettings{ 1.5, 2, 75, 2.5, -100, true, { 1, -2.5, 0 }, false, 3, 250 }));
    EXPECT_TRUE(readWith("version", R"([{"a":null}])"));
    for (const auto& [name, value] : completeRecord) {
        auto others = completeRecord;
        others.erase(name);
        EXPECT_FALSE(decodeFileSettings(written(others))) << name;
        for (const char* wrong : { "null", "\"1\"", "NaN" })
            EXPECT_FALSE(readWith(name, wrong)) << name << ": " << wrong;
    }
    struct Case {
        const char* name;
        std::vector<const char*> accepted, rejected;
    };
    for (const Case& c : {
             Case{ "speed", { "75", "7.5e1", "18446744073709551616" }, { "true", "1e999" } },
             Case{ "eqEnabled", { "false" }, { "1" } },
             Case{ "eqGains", { "[]", "[1,2,3,4,5,6]" }, { "[1,true]", "{\"0\":1}" } },
             Case{ "loopDelaySeconds",
                   { "-1", "2.0", "1e3", "9223372036854775807", "-9223372036854775808" },
                   { "2.5", "false", "9223372036854775808", "9223372036854775808.0", "1e19", "-1e19" } },
         }) {
        for (const char* value : c.accepted)
            EXPECT_TRUE(readWith(c.name, value)) << c.name << ": " << value;
        for (const char* value : c.rejected)
            EXPECT_FALSE(readWith(c.name, value)) << c.name << ": " << value;
    }
    EXPECT_EQ(readWith("loopDelaySeconds", "1e3")->loopDelaySeconds, 1000);
}

TEST(FileSettings, WhatIsNoObjectIsNoRecord)
{
    const std::string record = written(completeRecord);
    for (const std::string& text : { std::string(), std::string("[]"), std::string("null"), '[' + record + ']', record + '}',
                                     record.substr(0, record.size() - 1), std::string("\xFF\x00{", 3) })
        EXPECT_FALSE(decodeFileSettings(text)) << text;
}

}  // namespace
}  // namespace quillet
