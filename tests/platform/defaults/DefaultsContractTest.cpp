// What every defaults domain promises, whatever keeps its values.
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "platform/defaults/SqliteDefaultsDomain.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cmath>
#include <limits>
#include <string>
#include <thread>
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

struct SqliteRig {
    TemporaryFolder folder;
    SqliteDefaultsDomain domain{ folder / "defaults.sqlite" };
};

struct MemoryRig {
    MemoryDefaultsDomain domain;
};

template <typename Rig> class DefaultsContract : public testing::Test {
protected:
    Rig m_rig;
    DefaultsDomain& m_domain = m_rig.domain;
};

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
    domain.setData("data", {});
    EXPECT_EQ(domain.data("data"), "");
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

TYPED_TEST(DefaultsContract, NumbersReadAsEachOtherWhereTheValueIsExact)
{
    struct Case {
        DefaultsValue value;
        std::optional<double> real;
        std::optional<std::int64_t> integer;
        std::optional<bool> boolean;
    };
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
    const Case cases[] = {
        { 2.0, 2.0, 2, true },
        { 2.5, 2.5, std::nullopt, true },
        { 0.0, 0.0, 0, false },
        { 0x1p63, 0x1p63, std::nullopt, true },
        { -0x1p63, -0x1p63, least, true },
        { std::int64_t{ 3 }, 3.0, 3, true },
        { std::int64_t{ 0 }, 0.0, 0, false },
        { most, std::nullopt, most, true },
        { (std::int64_t{ 1 } << 53) + 1, std::nullopt, (std::int64_t{ 1 } << 53) + 1, true },
        { least, -0x1p63, least, true },
        { true, 1.0, 1, true },
        { false, 0.0, 0, false },
        { std::string("1"), std::nullopt, std::nullopt, std::nullopt },
    };
    DefaultsDomain& domain = this->m_domain;
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const Case& c = cases[i];
        SCOPED_TRACE(testing::Message() << "case " << i);
        if (const auto* real = std::get_if<double>(&c.value))
            domain.setReal("key", *real);
        else if (const auto* integer = std::get_if<std::int64_t>(&c.value))
            domain.setInteger("key", *integer);
        else if (const auto* boolean = std::get_if<bool>(&c.value))
            domain.setBoolean("key", *boolean);
        else
            domain.setString("key", std::get<std::string>(c.value));
        EXPECT_EQ(domain.real("key"), c.real);
        EXPECT_EQ(domain.integer("key"), c.integer);
        EXPECT_EQ(domain.boolean("key"), c.boolean);
    }
}

TYPED_TEST(DefaultsContract, AnotherTypeOrAMissingKeyAnswersNothing)
{
    DefaultsDomain& domain = this->m_domain;
    domain.setData("data", "bytes");
    domain.setString("string", "5:hello");
    domain.setStringArray("texts", { "hello" });
    domain.setInteger("number", 1);
    for (const char* key : { "string", "texts", "number", "missing" })
        EXPECT_EQ(domain.data(key), std::nullopt) << key;
    for (const char* key : { "data", "texts", "number", "missing" })
        EXPECT_EQ(domain.string(key), std::nullopt) << key;
    for (const char* key : { "data", "string", "number", "missing" })
        EXPECT_EQ(domain.stringArray(key), std::nullopt) << key;
    for (const char* key : { "data", "string", "texts", "missing" }) {
        EXPECT_EQ(domain.real(key), std::nullopt) << key;
        EXPECT_EQ(domain.integer(key), std::nullopt) << key;
        EXPECT_EQ(domain.boolean(key), std::nullopt) << key;
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
    constexpr int threadCount = 4;
    constexpr int perThread = 100;
    std::atomic<int> wrong = 0;
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < threadCount; ++t)
            threads.emplace_back([&, t] {
                for (int i = 0; i < perThread; ++i) {
                    const std::string key = std::to_string(t) + '.' + std::to_string(i);
                    this->m_domain.setString(key, key);
                    wrong += this->m_domain.string(key) != key;
                    this->m_domain.setInteger("shared", i);
                    wrong += this->m_domain.allKeys().empty();
                }
            });
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(this->m_domain.allKeys().size(), std::size_t{ threadCount * perThread + 1 });
}

TEST(DefaultsValue, WhatIsNoPackOfTextsDoesNotUnpack)
{
    for (const char* packed : { "5:abc", "5", ":abc", "3abc", "-1:a", "1:ab", "99999999999999999999:a", "1:a " })
        EXPECT_EQ(unpackTexts(packed), std::nullopt) << packed;
}

}  // namespace
}  // namespace quillet
