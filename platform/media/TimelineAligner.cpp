#include "platform/media/TimelineAligner.h"

#include "platform/base/Require.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace quillet {
namespace {

/// A stream that goes on so long without stamps is taken as it comes.
constexpr std::size_t patienceBlocks = 512;

}  // namespace

std::optional<std::int64_t> votedStart(std::span<const StampedPosition> blocks, std::int64_t tolerance)
{
    std::vector<std::int64_t> starts;
    std::int64_t before = 0;
    for (const StampedPosition& block : blocks) {
        if (block.stamp)
            starts.push_back(*block.stamp - before);
        before += block.frames;
    }
    if (starts.empty())
        return std::nullopt;
    std::ranges::sort(starts);
    // The longest run of opinions that agree; of two equally long ones the earlier place, because stamps err towards later.
    std::size_t bestBegin = 0;
    std::size_t bestEnd = 0;
    for (std::size_t begin = 0, end = 0; begin < starts.size(); ++begin) {
        while (end < starts.size() && starts[end] - starts[begin] <= 2 * tolerance)
            ++end;
        if (end - begin > bestEnd - bestBegin) {
            bestBegin = begin;
            bestEnd = end;
        }
    }
    return (starts[bestBegin] + starts[bestEnd - 1]) / 2;
}

TimelineAligner::TimelineAligner(int lookahead, std::int64_t tolerance)
    : m_lookahead(static_cast<std::size_t>(lookahead)),
      m_tolerance(tolerance)
{
    REQUIRE(lookahead >= 1);
}

void TimelineAligner::restart(std::int64_t guess)
{
    m_pending.clear();
    m_next = guess;
    m_nextIsKnown = false;
    m_finished = false;
}

bool TimelineAligner::supports(std::int64_t start) const
{
    for (const StampedPosition& block : m_pending) {
        if (block.stamp && std::abs(*block.stamp - start) <= m_tolerance)
            return true;
        start += block.frames;
    }
    return false;
}

bool TimelineAligner::isGuessing() const
{
    return !m_nextIsKnown
        && std::ranges::none_of(m_pending, [](const StampedPosition& block) { return block.stamp.has_value(); });
}

bool TimelineAligner::canVote() const
{
    if (m_finished || m_pending.size() >= patienceBlocks)
        return true;
    const auto stamped = static_cast<std::size_t>(
        std::ranges::count_if(m_pending, [](const StampedPosition& block) { return block.stamp.has_value(); }));
    return stamped >= m_lookahead || (stamped == 0 && m_nextIsKnown);
}

std::optional<PlacedBlock> TimelineAligner::pop()
{
    if (m_pending.empty())
        return std::nullopt;
    if (!m_nextIsKnown || !supports(m_next)) {
        if (!canVote())
            return std::nullopt;
        const std::vector<StampedPosition> blocks(m_pending.begin(), m_pending.end());
        m_next = votedStart(blocks, m_tolerance).value_or(m_next);
        m_nextIsKnown = true;
    }
    const PlacedBlock block{ m_next, m_pending.front().frames };
    m_pending.pop_front();
    m_next += block.frames;
    return block;
}

}  // namespace quillet
