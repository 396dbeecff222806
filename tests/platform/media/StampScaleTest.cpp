#include "platform/media/StampScale.h"

#include <gmock/gmock.h>

#include <cmath>
#include <vector>

namespace quillet {
namespace {

/// Positions of blocks, the first at 0.
std::vector<std::int64_t> startsOf(const std::vector<std::int64_t>& frames)
{
    std::vector<std::int64_t> starts{ 0 };
    for (const std::int64_t count : frames)
        starts.push_back(starts.back() + count);
    starts.pop_back();
    return starts;
}

struct Case {
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
    const std::vector<Case> cases{
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
        { "milliseconds, cut off, behind a short first block",
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
    for (const Case& test : cases) {
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

}  // namespace
}  // namespace quillet
