// What every defaults domain promises, whatever keeps its values.
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "platform/defaults/SqliteDefaultsDomain.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace quillet {
namespace {

using testing::UnorderedElementsAre;
using Texts = std::vector<std::string>;

const std::string everyByte = [] {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    return bytes;
}();

class SqliteRig : public testing::Test {
protected:
    TemporaryFolder m_folder;
    SqliteDefaultsDomain m_domain{ m_folder / "defaults.sqlite" };
};

class MemoryRig : public testing::Test {
protected:
    MemoryDefaultsDomain m_domain;
};

template <typename Rig> class DefaultsContract : public Rig { };

using Rigs = testing::Types<SqliteRig, MemoryRig>;
TYPED_TEST_SUITE(DefaultsContract, Rigs);

TYPED_TEST(DefaultsContract, EveryTypeComesBackAsItWas)
{
    DefaultsDomain& domain = this->m_domain;
    for (const std::string& text : { std::string(), std::string("caf\xC3\xA9"), everyByte, std::string(1 << 20, 'x') }) {
        domain.setData("data", text);
        domain.setString("string", text);
        EXPECT_EQ(domain.data("data"), text);
        EXPECT_EQ(domain.string("string"), text);
    }
    for (const Texts& texts : { Texts{}, Texts{ "" }, Texts{ "", "" }, Texts{ "/a\xFF\n3:b.mp3", everyByte, "12", ":" } }) {
        domain.setStringArray("texts", texts);
        EXPECT_EQ(domain.stringArray("texts"), texts);
    }
    for (const double real : { 0.1, -0.0, 5e-324, -1.7976931348623157e308, std::numeric_limits<double>::infinity() }) {
        domain.setReal("real", real);
        EXPECT_EQ(domain.real("real"), real);
        EXPECT_EQ(std::signbit(*domain.real("real")), std::signbit(real));
    }
    for (const std::int64_t integer : { std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max() }) {
        domain.setInteger("integer", integer);
        EXPECT_EQ(domain.integer("integer"), integer);
    }
    for (const bool boolean : { true, false }) {
        domain.setBoolean("boolean", boolean);
        EXPECT_EQ(domain.boolean("boolean"), boolean);
    }
}

TYPED_TEST(DefaultsContract, AnotherTypeOrAMissingKeyAnswersNothing)
{
    DefaultsDomain& domain = this->m_domain;
    domain.setData("data", "bytes");
    domain.setString("string", "5:hello");
    domain.setStringArray("texts", { "hello" });
    domain.setInteger("integer", 1);
    domain.setReal("real", 1);
    domain.setBoolean("boolean", true);
    for (const std::string key : { "data", "string", "texts", "integer", "real", "boolean", "missing" }) {
        SCOPED_TRACE(key);
        const bool number = key == "integer" || key == "real" || key == "boolean";
        EXPECT_EQ(domain.data(key).has_value(), key == "data");
        EXPECT_EQ(domain.string(key).has_value(), key == "string");
        EXPECT_EQ(domain.stringArray(key).has_value(), key == "texts");
        EXPECT_EQ(domain.real(key), number ? std::optional(1.0) : std::nullopt);
        EXPECT_EQ(domain.integer(key), number ? std::optional(1) : std::nullopt);
        EXPECT_EQ(domain.boolean(key), number ? std::optional(true) : std::nullopt);
    }
}

TYPED_TEST(DefaultsContract, KeysAreBytesAndEachHoldsItsLastValue)
{
    DefaultsDomain& domain = this->m_domain;
    const Texts keys{ "settings./caf\xC3\xA9", "settings./caf\xE9", "settings./CAF\xC3\xA9", everyByte, "" };
    for (std::size_t i = 0; i < keys.size(); ++i) {
        domain.setString(keys[i], "before");
        domain.setInteger(keys[i], static_cast<std::int64_t>(i));
    }
    domain.setReal(keys[0], std::numeric_limits<double>::quiet_NaN());
    domain.setInteger({}, 4);
    for (std::size_t i = 0; i < keys.size(); ++i)
        EXPECT_EQ(domain.integer(keys[i]), static_cast<std::int64_t>(i));
    EXPECT_THAT(domain.allKeys(), testing::UnorderedElementsAreArray(keys));

    domain.remove(keys[1]);
    domain.remove(keys[1]);
    EXPECT_EQ(domain.integer(keys[1]), std::nullopt);
    EXPECT_THAT(domain.allKeys(), UnorderedElementsAre(keys[0], keys[2], keys[3], keys[4]));
}

TYPED_TEST(DefaultsContract, FamiliesOfKeysAreToldByTheirFirstBytes)
{
    DefaultsDomain& domain = this->m_domain;
    const std::string large(50'000, 'x');
    domain.setData("wave.a", "1234");
    domain.setData("wave.\xFF\xFF", large);
    domain.setString("wave.b", "no data");
    for (const char* other : { "wave", "wave/a", "waveSettings.a", "Wave.a", "wav%.a", "" })
        domain.setData(other, "12");
    EXPECT_THAT(domain.keysWithPrefix("wave."), UnorderedElementsAre("wave.a", "wave.b", "wave.\xFF\xFF"));
    EXPECT_EQ(domain.sizeOfPrefix("wave."), (DefaultsSize{ 3, 50'004 }));
    EXPECT_EQ(domain.sizeOfPrefix("none."), (DefaultsSize{}));
    EXPECT_EQ(domain.keysWithPrefix("wave.\xFF"), Texts{ "wave.\xFF\xFF" });
    EXPECT_EQ(domain.keysWithPrefix("").size(), 9);

    Texts heads;
    for (const DefaultsHead& head : domain.dataHeads("wave.", 6))
        heads.push_back(head.key + ' ' + head.head + ' ' + std::to_string(head.byteCount));
    EXPECT_THAT(heads, UnorderedElementsAre("wave.a 1234 4", "wave.\xFF\xFF xxxxxx 50000"));

    domain.removeAll(Texts{ "wave.a", "missing", "wave.b" });
    EXPECT_EQ(domain.keysWithPrefix("wave."), Texts{ "wave.\xFF\xFF" });
    EXPECT_EQ(domain.allKeys().size(), 7);
}

TYPED_TEST(DefaultsContract, ServesSeveralThreadsAtOnce)
{
    std::vector<std::jthread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 100; ++i) {
                const std::string key = std::to_string(t) + '.' + std::to_string(i);
                this->m_domain.setString(key, key);
                EXPECT_EQ(this->m_domain.string(key), key);
                this->m_domain.setInteger("shared", i);
            }
        });
    threads.clear();
    EXPECT_EQ(this->m_domain.allKeys().size(), 401U);
}

TEST(DefaultsValue, NumbersReadAsEachOtherWhereTheValueIsExact)
{
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t odd = (std::int64_t{ 1 } << 53) + 1;
    const std::tuple<DefaultsValue, std::optional<double>, std::optional<std::int64_t>, std::optional<bool>> cases[] = {
        { 2.5, 2.5, std::nullopt, true },  { 0.0, 0.0, 0, false },           { 0x1p63, 0x1p63, std::nullopt, true },
        { -0x1p63, -0x1p63, least, true }, { odd, std::nullopt, odd, true }, { most, std::nullopt, most, true },
        { least, -0x1p63, least, true },   { false, 0.0, 0, false },         { std::int64_t{ 0 }, 0.0, 0, false },
    };
    for (const auto& [value, real, integer, boolean] : cases) {
        SCOPED_TRACE(testing::PrintToString(real));
        EXPECT_EQ(realOf(value), real);
        EXPECT_EQ(integerOf(value), integer);
        EXPECT_EQ(booleanOf(value), boolean);
    }
}

TEST(DefaultsValue, WhatIsNoPackOfTextsDoesNotUnpack)
{
    for (const char* packed : { "5:abc", "5", ":abc", "3abc", "-1:a", "1:ab", "99999999999999999999:a", "1:a " })
        EXPECT_EQ(unpackTexts(packed), std::nullopt) << packed;
}

}  // namespace
}  // namespace quillet
