// Where the frames of a file lie: by the headers of an MPEG stream, by stamps coarser than a frame, and by stamps that agree.

#include "platform/media/MpegFrameWalk.h"
#include "platform/media/StampScale.h"
#include "platform/media/TimelineAligner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace quillet {
namespace {

using namespace std::string_literals;

/// An MPEG-1 layer III frame of 128 kbit/s at 44.1 kHz: 417 bytes, or 418 with padding.
std::string frame(bool padded = false)
{
    std::string bytes(padded ? 418 : 417, '\xAA');
    bytes.replace(0, 4, "\xFF\xFB\x90\x64"s);
    if (padded)
        bytes[2] = '\x92';
    return bytes;
}

MpegFrames walk(const std::string& file, std::int64_t from = 0)
{
    const auto bytesAt = [&](std::int64_t offset, std::span<unsigned char> bytes) {
        const std::size_t begin = std::min(static_cast<std::size_t>(offset), file.size());
        const std::size_t count = std::min(bytes.size(), file.size() - begin);
        std::memcpy(bytes.data(), file.data() + begin, count);
        return count;
    };
    return walkMpegFrames(bytesAt, from);
}

TEST(MpegFrameWalkTest, HopsFromFrameToFrameUpToTheEnd)
{
    const auto plain = walk("junk" + frame() + frame(true) + frame(), 4);
    EXPECT_EQ(plain.offsets, (std::vector<std::int64_t>{ 4, 421, 839 }));
    EXPECT_TRUE(plain.reachesTheEnd);

    std::string many;
    for (int i = 0; i < 2000; ++i)
        many += frame(i % 3 == 0);
    EXPECT_EQ(walk(many).offsets.size(), 2000) << "frames lie across the ends of the buffer";
}

TEST(MpegFrameWalkTest, OnlyTagsAndPartsOfFramesMayFollow)
{
    struct Case {
        const char* rule;
        std::string tail;
        bool isTheEnd;
    };
    const std::string otherRate = "\xFF\xFB\x94\x64"s;
    for (const Case& test : {
             Case{ "a frame that is cut off is not counted", frame().substr(0, 100), true },
             Case{ "ID3v1", "TAG" + std::string(125, ' '), true },
             Case{ "APE", "APETAGEX" + std::string(24, '\0'), true },
             Case{ "damage is not the end", "\0\0\0\0"s + frame(), false },
             Case{ "nor is another sample rate", otherRate + std::string(500, '\xAA'), false },
             Case{ "nor a frame of unknown length", "\xFF\xFB\x00\x64"s + std::string(500, '\xAA'), false },
         }) {
        const auto frames = walk(frame() + frame() + test.tail);
        EXPECT_EQ(frames.offsets.size(), 2) << test.rule;
        EXPECT_EQ(frames.reachesTheEnd, test.isTheEnd) << test.rule;
    }
    EXPECT_TRUE(walk("").offsets.empty());
}

/// Positions of blocks, the first at 0.
std::vector<std::int64_t> startsOf(const std::vector<std::int64_t>& frames)
{
    std::vector<std::int64_t> starts{ 0 };
    for (const std::int64_t count : frames)
        starts.push_back(starts.back() + count);
    starts.pop_back();
    return starts;
}

struct Stamping {
    const char* rule;
    StreamClock clock;
    std::vector<std::int64_t> frames;
    /// The stamp of the block at this position.
    std::int64_t (*ticks)(std::int64_t position);
};

std::vector<std::int64_t> blocks(std::int64_t first, std::int64_t others)
{
    std::vector<std::int64_t> frames(150'000, others);
    frames[0] = first;
    return frames;
}

/// Long and short blocks as Vorbis mixes them.
std::vector<std::int64_t> mixedBlocks()
{
    std::vector<std::int64_t> frames{ 128 };
    for (int i = 0; i < 50'000; ++i)
        frames.insert(frames.end(),
                      i % 7 == 0 ? std::initializer_list<std::int64_t>{ 576, 128, 128, 576 }
                                 : std::initializer_list<std::int64_t>{ 1024, 1024 });
    return frames;
}

TEST(StampScaleTest, EveryBlockOfAnHourIsPlacedExactly)
{
    const std::vector<Stamping> cases{
        { "a tick a frame, starting anywhere",
          { 1, 44'100, 44'100, false, 0 },
          blocks(1024, 1024),
          [](std::int64_t position) { return position - 1024; } },
        { "320 ticks a frame, the encoder's delay left out",
          { 1, 14'112'000, 44'100, true, 0 },
          blocks(47, 1152),
          [](std::int64_t position) { return (position + 1105) * 320; } },
        { "milliseconds, rounded",
          { 1, 1000, 44'100, false, 0 },
          blocks(1024, 1024),
          [](std::int64_t position) { return std::lround(static_cast<double>(position) / 44.1); } },
        { "milliseconds, cut off, after a short first block",
          { 1, 1000, 48'000, false, 0 },
          blocks(648, 960),
          [](std::int64_t position) { return (position + 312) / 48; } },
        { "milliseconds and blocks of many lengths",
          { 1, 1000, 44'100, false, 64 },
          mixedBlocks(),
          [](std::int64_t position) { return std::lround(static_cast<double>(position + 128) / 44.1); } },
        { "90 kHz",
          { 1, 90'000, 44'100, false, 0 },
          blocks(1024, 1024),
          [](std::int64_t position) { return 126'000 + position * 90'000 / 44'100; } },
        { "90 kHz, added up block by block",
          { 1, 90'000, 44'100, true, 0 },
          blocks(1536, 1536),
          [](std::int64_t position) { return position / 1536 * 3134; } },
    };
    for (const Stamping& test : cases) {
        const std::vector<std::int64_t> starts = startsOf(test.frames);
        std::vector<StampedBlock> first;
        for (std::size_t i = 0; i < 24; ++i)
            first.push_back({ test.ticks(starts[i]), test.frames[i] });
        const StampScale scale(test.clock, first);
        std::size_t wrong = 0;
        for (const std::int64_t start : starts)
            wrong += scale.position(test.ticks(start)) != start ? 1 : 0;
        EXPECT_EQ(wrong, 0U) << test.rule;
        // A jump aims at a stamp: its place must be the wanted one, within what a tick can tell.
        const std::int64_t wanted = starts[100'000];
        EXPECT_NEAR(static_cast<double>(scale.ticks(wanted)), static_cast<double>(test.ticks(wanted)),
                    1 + static_cast<double>(test.clock.tickDenominator) / 48'000)
            << test.rule;
    }
}

TEST(StampScaleTest, UnequalBlocksWithCoarseStampsAreUncertainByATick)
{
    const std::vector<StampedBlock> start{ { 0, 100 }, { 2, 113 }, { 5, 90 }, { 7, 200 }, { 11, 100 } };
    EXPECT_EQ(StampScale({ 1, 1000, 44'100, false, 0 }, start).tolerance(), 45);
    EXPECT_EQ(StampScale({ 1, 44'100, 44'100, false, 0 }, start).tolerance(), 0);
}

using Stamp = std::optional<std::int64_t>;

struct Alignment {
    const char* rule;
    int lookahead;
    std::int64_t tolerance;
    /// Of blocks of 100 frames.
    std::vector<Stamp> stamps;
    std::vector<std::int64_t> positions;
};

std::vector<std::int64_t> positionsOf(const Alignment& test)
{
    TimelineAligner aligner(test.lookahead, test.tolerance);
    aligner.restart(7);
    std::vector<std::int64_t> positions;
    const auto drain = [&] {
        while (const auto block = aligner.pop())
            positions.push_back(block->position);
    };
    for (const Stamp stamp : test.stamps) {
        aligner.push({ stamp, 100 });
        drain();
    }
    aligner.finish();
    drain();
    return positions;
}

TEST(TimelineAlignerTest, BlocksArePlacedByStampsThatAgree)
{
    const std::vector<Alignment> cases{
        { "exact stamps are followed", 1, 0, { 500, 600, 700 }, { 500, 600, 700 } },
        { "a gap is a gap", 1, 0, { 500, 600, 1000, 1100 }, { 500, 600, 1000, 1100 } },
        { "an overlap too", 1, 0, { 500, 600, 650, 750 }, { 500, 600, 650, 750 } },
        { "a single wrong stamp moves nothing", 3, 0, { 500, 648, 700, 800, 948, 1000 }, { 500, 600, 700, 800, 900, 1000 } },
        { "not even the first", 3, 0, { 548, 600, 700, 800 }, { 500, 600, 700, 800 } },
        { "a gap is found among wrong stamps",
          3,
          0,
          { 500, 600, 1048, 1100, 1200, 1300 },
          { 500, 600, 1000, 1100, 1200, 1300 } },
        { "blocks without stamps wait for one", 1, 0, { {}, {}, 700, {}, 900 }, { 500, 600, 700, 800, 900 } },
        { "and take the guess if none comes", 2, 0, { {}, {} }, { 7, 107 } },
        { "coarse stamps make no gaps", 4, 20, { 515, 586, 712, 800, 885 }, { 500, 600, 700, 800, 900 } },
    };
    for (const Alignment& test : cases)
        EXPECT_EQ(positionsOf(test), test.positions) << test.rule;
}

TEST(TimelineAlignerTest, KnowsWhenItWouldGuess)
{
    TimelineAligner aligner(1, 0);
    aligner.restart(0);
    aligner.push({ {}, 100 });
    EXPECT_TRUE(aligner.isGuessing());
    aligner.push({ 300, 100 });
    EXPECT_FALSE(aligner.isGuessing());
}

}  // namespace
}  // namespace quillet
