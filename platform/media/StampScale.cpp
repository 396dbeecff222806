#include "platform/media/StampScale.h"

#include "platform/base/Require.h"
#include "platform/media/TimelineAligner.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

extern "C" {
#include <libavutil/mathematics.h>
}

namespace quillet {
namespace {

/// The length of all blocks but the first (which may lack its encoder delay); 0 where they differ or are too few to tell.
std::int64_t commonBlockFrames(std::span<const StampedBlock> blocks)
{
    if (blocks.size() < 4)
        return 0;
    const std::int64_t frames = blocks[1].frames;
    // The last one may be cut where the stream ends.
    const auto inner = blocks.subspan(1, blocks.size() - 2);
    return std::ranges::all_of(inner, [&](const StampedBlock& block) { return block.frames == frames; }) ? frames : 0;
}

/// The distance of neighbouring stamps where it is always the same, or 0.
std::int64_t commonTickStep(std::span<const StampedBlock> blocks)
{
    if (blocks.size() < 4 || !blocks[1].ticks || !blocks[2].ticks)
        return 0;
    const std::int64_t step = *blocks[2].ticks - *blocks[1].ticks;
    for (std::size_t i = 3; i < blocks.size(); ++i)
        if (!blocks[i].ticks || *blocks[i].ticks - *blocks[i - 1].ticks != step)
            return 0;
    return std::max<std::int64_t>(step, 0);
}

}  // namespace

bool StreamClock::isExact() const { return tickDenominator % (std::int64_t{ sampleRate } * tickNumerator) == 0; }

StampScale::StampScale(const StreamClock& clock, std::span<const StampedBlock> start)
    : m_frames(std::int64_t{ clock.sampleRate } * clock.tickNumerator),
      m_ticks(clock.tickDenominator)
{
    REQUIRE(clock.sampleRate > 0 && clock.tickNumerator > 0 && clock.tickDenominator > 0);
    const std::int64_t error = clock.isExact() ? 0 : m_frames / clock.tickDenominator + 1;
    if (!clock.isExact()) {
        const std::int64_t frames = clock.blockStep > 0 ? clock.blockStep : commonBlockFrames(start);
        const std::int64_t step = commonTickStep(start);
        if (frames > 0 && step > 0 && clock.accumulatesRounding) {
            m_frames = start[1].frames;
            m_ticks = step;
        } else if (frames > 0 && frames >= error) {
            m_grid = frames;
            m_gridPhase = start[0].frames % frames;
        } else {
            m_tolerance = error;
        }
    }
    std::vector<StampedPosition> blocks;
    for (const StampedBlock& block : start)
        blocks.push_back({ block.ticks ? std::optional(unshifted(*block.ticks)) : std::nullopt, block.frames });
    m_origin = votedStart(blocks, m_grid > 0 ? error : m_tolerance).value_or(0);
}

std::int64_t StampScale::unshifted(std::int64_t ticks) const
{
    return av_rescale_rnd(ticks, m_frames, m_ticks, AV_ROUND_NEAR_INF);
}

std::int64_t StampScale::position(std::int64_t ticks) const
{
    const std::int64_t near = unshifted(ticks) - m_origin;
    if (m_grid == 0)
        return near;
    const std::int64_t snapped = m_gridPhase + av_rescale_rnd(near - m_gridPhase, 1, m_grid, AV_ROUND_NEAR_INF) * m_grid;
    // The first block may be shorter than the others.
    return std::abs(near) < std::abs(near - snapped) ? 0 : snapped;
}

std::int64_t StampScale::ticks(std::int64_t position) const
{
    return av_rescale_rnd(position + m_origin, m_ticks, m_frames, AV_ROUND_DOWN);
}

}  // namespace quillet
