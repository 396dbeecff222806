#include "platform/media/TimelineAligner.h"

#include <gmock/gmock.h>

#include <optional>
#include <vector>

namespace quillet {
namespace {

using Stamp = std::optional<std::int64_t>;

struct Case {
    const char* rule;
    int lookahead;
    std::int64_t tolerance;
    /// Of blocks of 100 frames.
    std::vector<Stamp> stamps;
    std::vector<std::int64_t> positions;
};

std::vector<std::int64_t> positionsOf(const Case& test)
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
    const std::vector<Case> cases{
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
    for (const Case& test : cases)
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
