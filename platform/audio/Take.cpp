#include "platform/audio/Take.h"

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

constexpr std::size_t keptPasses = 512;

}  // namespace

Take::Take(std::int64_t takeEpoch, int rate, std::vector<TakeSource> takeSources, FrameRange segment)
    : epoch(takeEpoch),
      sampleRate(rate),
      sources(std::move(takeSources)),
      ring(ringFrames(rate), 2 * static_cast<int>(sources.size())),
      m_passes{ { segment, 0 } }
{
}

std::optional<FrameRange> Take::next() const
{
    const std::scoped_lock lock(m_lock);
    return m_next;
}

void Take::setNext(std::optional<FrameRange> segment)
{
    const std::scoped_lock lock(m_lock);
    m_next = segment;
}

std::int64_t Take::passCount() const
{
    const std::scoped_lock lock(m_lock);
    return m_forgotten + static_cast<std::int64_t>(m_passes.size());
}

Pass Take::pass(std::int64_t number) const
{
    const std::scoped_lock lock(m_lock);
    const std::int64_t index =
        std::clamp<std::int64_t>(number - m_forgotten, 0, static_cast<std::int64_t>(m_passes.size()) - 1);
    return m_passes[static_cast<std::size_t>(index)];
}

std::optional<FrameRange> Take::beginNextPass(std::int64_t startFrame, std::int64_t shortest)
{
    const std::scoped_lock lock(m_lock);
    if (!m_next || m_next->count < shortest)
        return std::nullopt;
    if (m_passes.size() == keptPasses) {
        m_passes.erase(m_passes.begin(), m_passes.begin() + keptPasses / 2);
        m_forgotten += keptPasses / 2;
    }
    m_passes.push_back({ *m_next, startFrame });
    return m_next;
}

}  // namespace quillet
