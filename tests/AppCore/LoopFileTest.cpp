#include "AppCore/LoopFile.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quillet {
namespace {

/// A song that swells and fades in a way of its own, a little changed as another encoding changes it.
std::vector<float> peaks(double way, double noise = 0, std::size_t count = 2000)
{
    std::vector<float> all;
    for (std::size_t i = 0; i < count; ++i) {
        const double place = static_cast<double>(i) / static_cast<double>(count);
        const double swell = 0.5 + 0.3 * std::sin(40 * way * place) + 0.2 * std::sin(171 * way * place);
        all.push_back(static_cast<float>(swell + noise * std::sin(static_cast<double>(7 * i))));
    }
    return all;
}

TEST(LoopFileTest, ASongIsKnownByItsSoundAlone)
{
    const auto song = fingerprintOf(peaks(1), 200);
    EXPECT_TRUE(areOfOneSong(song, fingerprintOf(peaks(1, 0.01, 2003), 200.05))) << "another encoding";
    EXPECT_FALSE(areOfOneSong(song, fingerprintOf(peaks(1), 200.5)));
    EXPECT_FALSE(areOfOneSong(song, fingerprintOf(peaks(1.01), 200)));
    EXPECT_FALSE(areOfOneSong(song, fingerprintOf({}, 200)));
    EXPECT_EQ(fingerprintOf(std::vector<float>(3, 0.F), 1).levels, std::vector<std::uint8_t>(256, 0)) << "short and silent";
}

TEST(LoopFileTest, LoopsComeBackAsTheyWere)
{
    LoopFile file{ "a \"b\" \xff.mp3", fingerprintOf(peaks(1), 200.125), {} };
    file.loops = { { .name = "Ü <b>\n1", .region = { 1.25, 2.5 }, .speed = 61.5, .pitch = -150, .color = 3, .times = 7 },
                   { .name = "b", .region = { 0.1, 0.3 }, .trainer = Trainer{ .fromSpeed = 44 } } };
    const auto read = decodeLoopFile(encodeLoopFile(file));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->song, file.song);
    EXPECT_EQ(read->songName, "a \"b\" \xEF\xBF\xBD.mp3");
    file.loops[0].name = "Ü <b> 1";
    EXPECT_EQ(read->loops, file.loops);
}

TEST(LoopFileTest, WhatIsNoFileOfLoopsIsRefused)
{
    for (const std::string& text :
         { std::string(), std::string("RIFF"), std::string("[]"), std::string("{}"), std::string(R"({"quilletLoops":"1"})"),
           std::string(100000, '['), R"({"quilletLoops":1,"loops":[]})" + std::string(LoopFile::maxBytes, ' ') }) {
        const auto read = decodeLoopFile(text);
        ASSERT_FALSE(read) << text.substr(0, 40);
        EXPECT_EQ(read.error(), LoopFileError::isNoLoopFile);
    }
    EXPECT_EQ(decodeLoopFile(R"({"quilletLoops":2,"loops":{}})").error(), LoopFileError::isNewer);
    // What is wrong in it is left out, what is too much too.
    std::string many = R"({"quilletLoops":1,"song":7,"loops":[3,{"start":1},{"start":2,"end":1})";
    for (int i = 0; i < 600; ++i)
        many += R"(,{"start":1,"end":2,"name":")" + std::string(1000, 'x') + R"("})";
    const auto read = decodeLoopFile(many + "]}");
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->song.levels.empty());
    ASSERT_EQ(read->loops.size(), Practice::maxLoops);
    EXPECT_EQ(read->loops[0].name.size(), NamedLoop::maxNameLength);
}

TEST(LoopFileTest, LoopsAreAddedToThoseThatAreThere)
{
    const NamedLoop there{ .name = "there", .region = { 1, 2 } };
    const NamedLoop late{ .name = "late", .region = { 9, 12 } };
    const NamedLoop beyond{ .name = "beyond", .region = { 10, 12 } };
    LoopMerge merge = mergeLoops({ there }, { late, there, beyond }, 10);
    EXPECT_EQ(merge.added, 1U);
    EXPECT_EQ(merge.alreadyThere, 1U);
    EXPECT_EQ(merge.beyondEnd, 1U);
    ASSERT_EQ(merge.loops.size(), 2U);
    EXPECT_EQ(merge.loops[1].region, (TimeRange{ 9, 10 }));

    merge = mergeLoops(std::vector<NamedLoop>(Practice::maxLoops, there), { late }, 10);
    EXPECT_EQ(merge.tooMany, 1U);
    EXPECT_EQ(merge.loops.size(), Practice::maxLoops);
}

}  // namespace
}  // namespace quillet
