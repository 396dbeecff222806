// Keeps the play head in view by turning pages: where it leaves the view, the view goes on to the page that begins with it. A
// view that was moved by hand stays until the play head reaches the next page's edge. It moves nothing by itself.
// Threads: a value, no shared state.
#pragma once

#include "AppCore/TimeRange.h"
#include "AppCore/WaveformCoordinates.h"

#include <optional>

namespace quillet {

class PageFollower {
public:
    /// Of the old page, as a fraction of the view's width, what is still seen to the play head's left on the new one.
    static constexpr double overlap = 0.1;

    /// The pan that the view needs for a play head at `head` (seconds), or nothing where it may stay.
    [[nodiscard]] std::optional<double> pan(const WaveformCoordinates& view, double head);

    /// The user has moved the view to `view`, which showed `before`, while the play head was at `head`.
    void handMoved(const TimeRange& before, const WaveformCoordinates& view, double head);
    /// Whatever was moved by hand, the play head is followed again.
    void reset() { m_held.reset(); }

private:
    /// The page that the play head has to leave first.
    std::optional<TimeRange> m_held;
};

/// The part of the file that is in view, seconds.
[[nodiscard]] TimeRange timesInView(const WaveformCoordinates& view);

}  // namespace quillet
