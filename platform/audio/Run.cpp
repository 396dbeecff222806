#include "platform/audio/Run.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace quillet {
namespace {

/// About 0.7 s, so that a slow disk is not heard.
std::int64_t ringFrames(int sampleRate)
{
    return static_cast<std::int64_t>(std::bit_ceil(static_cast<std::uint64_t>(0.68 * sampleRate)));
}

/// What a stretcher looks back on.
constexpr double leadSeconds = 0.1;
constexpr std::size_t keptPasses = 2048;

std::int64_t leadOf(const Pass& first, const Run::Start& start, int sampleRate)
{
    const std::int64_t wanted = start.alignedFrame ? static_cast<std::int64_t>(leadSeconds * sampleRate) : 0;
    return std::min({ wanted, start.offsetFrames, first.segment.start + start.offsetFrames });
}

}  // namespace

std::optional<Pass> RunPlan::takeNext(std::int64_t number)
{
    if (number > lastPass || entries.empty())
        return std::nullopt;
    Entry& entry = entries.front();
    const Pass next = entry.pass;
    if (entry.times != PlannedPass::endless)
        --entry.times;
    if (entry.times <= 0)
        entries.erase(entries.begin());
    return next;
}

Run::Run(std::int64_t number, int rate, std::vector<RunSource> files, Pass first, Start begin, RunPlan plan)
    : generation(number),
      sampleRate(rate),
      sources(std::move(files)),
      start(begin),
      leadFrames(leadOf(first, begin, rate)),
      ring(ringFrames(rate), 2 * static_cast<int>(sources.size())),
      m_plan(std::move(plan)),
      m_passes{ { first, -begin.offsetFrames } }
{
}

bool Run::replan(std::int64_t number, RunPlan plan)
{
    const std::scoped_lock lock(m_lock);
    const std::int64_t begun = m_forgotten + std::ssize(m_passes);
    for (std::int64_t later = number + 1; later < begun; ++later) {
        if (later < m_forgotten)
            return false;
        const auto next = plan.takeNext(later);
        if (!next || next != m_passes[static_cast<std::size_t>(later - m_forgotten)].pass)
            return false;
    }
    if (m_lastBegun) {
        RunPlan rest = plan;
        if (rest.takeNext(begun))
            return false;
    }
    m_plan = std::move(plan);
    return true;
}

std::optional<Pass> Run::beginNextPass(std::int64_t startFrame)
{
    const std::scoped_lock lock(m_lock);
    const auto next = m_plan.takeNext(m_forgotten + std::ssize(m_passes));
    if (!next) {
        m_lastBegun = true;
        return std::nullopt;
    }
    if (m_passes.size() == keptPasses) {
        m_passes.erase(m_passes.begin(), m_passes.begin() + keptPasses / 2);
        m_forgotten += keptPasses / 2;
    }
    m_passes.push_back({ *next, startFrame });
    return next;
}

PlacedPass Run::pass(std::int64_t number) const
{
    const std::scoped_lock lock(m_lock);
    const std::int64_t index = std::clamp<std::int64_t>(number - m_forgotten, 0, std::ssize(m_passes) - 1);
    return m_passes[static_cast<std::size_t>(index)];
}

}  // namespace quillet
