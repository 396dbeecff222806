#include "platform/media/TimelineAligner.h"

#include "platform/base/Require.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

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

void TimelineAligner::push(std::optional<std::int64_t> stamp, std::vector<float> stereo)
{
    const auto frames = static_cast<std::int64_t>(stereo.size() / 2);
    m_pending.push_back({ { stamp, frames }, std::move(stereo) });
}

bool TimelineAligner::supports(std::int64_t start) const
{
    for (const Pending& pending : m_pending) {
        if (pending.block.stamp && std::abs(*pending.block.stamp - start) <= m_tolerance)
            return true;
        start += pending.block.frames;
    }
    return false;
}

bool TimelineAligner::isGuessing() const
{
    return !m_nextIsKnown
        && std::ranges::none_of(m_pending, [](const Pending& pending) { return pending.block.stamp.has_value(); });
}

bool TimelineAligner::canVote() const
{
    if (m_finished || m_pending.size() >= patienceBlocks)
        return true;
    const auto stamped = static_cast<std::size_t>(
        std::ranges::count_if(m_pending, [](const Pending& pending) { return pending.block.stamp.has_value(); }));
    return stamped >= m_lookahead || (stamped == 0 && m_nextIsKnown);
}

std::optional<AlignedBlock> TimelineAligner::pop()
{
    if (m_pending.empty())
        return std::nullopt;
    if (!m_nextIsKnown || !supports(m_next)) {
        if (!canVote())
            return std::nullopt;
        std::vector<StampedPosition> blocks;
        std::ranges::transform(m_pending, std::back_inserter(blocks), &Pending::block);
        m_next = votedStart(blocks, m_tolerance).value_or(m_next);
        m_nextIsKnown = true;
    }
    Pending front = std::move(m_pending.front());
    m_pending.pop_front();
    AlignedBlock block{ m_next, std::move(front.stereo) };
    m_next += front.block.frames;
    return block;
}

}  // namespace quillet
