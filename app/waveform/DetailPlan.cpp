#include "app/waveform/DetailPlan.h"

#include <algorithm>
#include <cmath>

namespace quillet {
namespace {

/// Of the view's width, on either side.
constexpr double beside = 0.5;

}  // namespace

DetailPlan::DetailPlan(std::int64_t chunks, Order order)
    : m_states(static_cast<std::size_t>(chunks), State::open),
      m_order(order)
{
}

void DetailPlan::look(double first, double end)
{
    const auto count = static_cast<double>(m_states.size());
    const auto range = [count](double from, double to) {
        return Range{ static_cast<std::int64_t>(std::floor(std::clamp(from, 0.0, 1.0) * count)),
                      static_cast<std::int64_t>(std::ceil(std::clamp(to, 0.0, 1.0) * count)) };
    };
    const double margin = (end - first) * beside;
    m_view = range(first, end);
    m_near = range(first - margin, end + margin);
}

std::optional<std::int64_t> DetailPlan::take(std::optional<std::int64_t> last, Scope scope)
{
    const auto chunk = chosen(last, scope);
    if (chunk)
        m_states[static_cast<std::size_t>(*chunk)] = State::taken;
    return chunk;
}

std::optional<std::int64_t> DetailPlan::chosen(std::optional<std::int64_t> last, Scope scope) const
{
    if (m_order == Order::inOrder)
        return scope == Scope::all ? firstOpen(0) : std::nullopt;
    const std::int64_t next = last.value_or(-2) + 1;
    for (const Range& range : { m_view, m_near }) {
        if (next >= range.first && next < range.end && isOpen(next))
            return next;
        if (const auto open = openIn(range))
            return open;
    }
    if (scope == Scope::near)
        return std::nullopt;
    if (isOpen(next))
        return next;
    const auto later = firstOpen(m_near.end);
    return later ? later : firstOpen(0);
}

bool DetailPlan::isOpen(std::int64_t chunk) const
{
    return chunk >= 0 && chunk < static_cast<std::int64_t>(m_states.size())
        && m_states[static_cast<std::size_t>(chunk)] == State::open;
}

/// The start of the longest open run, or its middle where another reader is on its way into it.
std::optional<std::int64_t> DetailPlan::openIn(const Range& range) const
{
    Range longest;
    for (std::int64_t i = range.first; i < range.end; ++i) {
        const std::int64_t start = i;
        while (i < range.end && isOpen(i))
            ++i;
        if (i - start > longest.end - longest.first)
            longest = { start, i };
    }
    if (longest.first == longest.end)
        return std::nullopt;
    const bool isApproached = longest.first > 0 && m_states[static_cast<std::size_t>(longest.first - 1)] == State::taken;
    return isApproached ? longest.first + (longest.end - longest.first) / 2 : longest.first;
}

std::optional<std::int64_t> DetailPlan::firstOpen(std::int64_t from) const
{
    for (std::int64_t i = from; i < static_cast<std::int64_t>(m_states.size()); ++i)
        if (isOpen(i))
            return i;
    return std::nullopt;
}

bool DetailPlan::wantsNear() const
{
    if (m_order == Order::inOrder)
        return false;
    for (std::int64_t i = m_near.first; i < m_near.end; ++i)
        if (isOpen(i))
            return true;
    return false;
}

}  // namespace quillet
