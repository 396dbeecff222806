#include "app/waveform/PageFollower.h"

#include <algorithm>

namespace quillet {
namespace {

bool contains(const TimeRange& range, double time) { return time >= range.start && time <= range.end; }

}  // namespace

TimeRange timesInView(const WaveformCoordinates& view) { return { view.xToTime(0), view.xToTime(view.viewWidth) }; }

std::optional<double> PageFollower::pan(const WaveformCoordinates& view, double head)
{
    const bool isInView = contains(timesInView(view), head);
    if (m_held && (isInView || !contains(*m_held, head)))
        m_held.reset();
    if (isInView || m_held || view.zoomLevel <= 1)
        return std::nullopt;
    const double place = view.timeToX(head) + view.panOffset;
    const double pan = std::clamp(place - overlap * view.viewWidth, 0.0, (view.zoomLevel - 1) * view.viewWidth);
    return pan != view.panOffset ? std::optional(pan) : std::nullopt;
}

void PageFollower::handMoved(const TimeRange& before, const WaveformCoordinates& view, double head)
{
    const TimeRange now = timesInView(view);
    const double length = now.end - now.start;
    if (contains(now, head))
        m_held.reset();
    else if (contains(before, head))
        // Where the view was zoomed too, a page is what it shows now.
        m_held = { std::max(before.start, head - length), std::min(before.end, head + length) };
    else if (!m_held)
        m_held = { head - length, head + length };
}

}  // namespace quillet
