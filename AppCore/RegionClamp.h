// The rules that keep the two ends of a region valid while they are dragged. All times are seconds. They look only at what
// they are given: nothing here knows the file or the view.
// Threads: callable from every thread.
#pragma once

#include "AppCore/TimeRange.h"

#include <algorithm>

namespace quillet::RegionClamp {

/// The shortest region that a dragged end leaves.
inline constexpr double minGap = 0.01;

[[nodiscard]] inline double clampStart(double start, double end) { return std::max(std::min(start, end - minGap), 0.0); }

[[nodiscard]] inline double clampEnd(double end, double start, double duration)
{
    return std::min(std::max(end, start + minGap), duration);
}

/// The region drawn from `anchor`, where the drag began, to `time`, on either side of it. It may be empty: here no gap is
/// kept.
[[nodiscard]] inline TimeRange clampNewRegion(double time, double anchor, double duration)
{
    return { std::max(std::min(time, anchor), 0.0), std::min(std::max(time, anchor), duration) };
}

}  // namespace quillet::RegionClamp
