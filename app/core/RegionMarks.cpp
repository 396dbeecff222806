#include "app/core/RegionMarks.h"

#include "AppCore/RegionClamp.h"

#include <algorithm>

namespace quillet {
namespace {

using RegionClamp::minGap;

/// `region`, at least `minGap` long and within the file.
TimeRange fitted(TimeRange region, double duration)
{
    region.start = std::clamp(region.start, 0.0, std::max(0.0, duration - minGap));
    region.end = std::clamp(region.end, std::min(region.start + minGap, duration), duration);
    return region;
}

}  // namespace

void RegionMarks::markStart(AppState& state)
{
    const double duration = state.audioDuration();
    TimeRange region{ state.heardPosition(), state.regionEnd() };
    if (region.end < region.start + minGap)
        region.end = duration;
    state.setRegion(fitted(region, duration));
    state.followRegionEnd();
}

void RegionMarks::markEnd(AppState& state)
{
    const double duration = state.audioDuration();
    const double window = state.holdEnabled() ? AppState::holdWindowSize : 0;
    TimeRange region{ state.regionStart(), std::max(minGap, state.heardPosition() + window) };
    if (region.start > region.end - minGap)
        region.start = 0;
    state.setRegion(fitted(region, duration));
    state.restartRegion();
}

void RegionMarks::nudgeStart(AppState& state, double bySeconds)
{
    const TimeRange region = state.region();
    state.setRegion({ RegionClamp::clampStart(region.start + bySeconds, region.end), region.end });
}

void RegionMarks::nudgeEnd(AppState& state, double bySeconds)
{
    const TimeRange region = state.region();
    state.setRegion({ region.start, RegionClamp::clampEnd(region.end + bySeconds, region.start, state.audioDuration()) });
    state.followRegionEnd();
}

void RegionMarks::moveByItsLength(AppState& state, int direction)
{
    const TimeRange region = state.region();
    const double length = region.end - region.start;
    const double last = std::max(0.0, state.audioDuration() - length);
    const double start = std::clamp(region.start + direction * length, 0.0, last);
    if (start == region.start)
        return;
    state.setRegion({ start, std::min(start + length, state.audioDuration()) });
    if (state.isPlaying())
        state.restartRegion();
    else
        state.setPlaybackPosition(start);
}

void RegionMarks::selectAll(AppState& state)
{
    state.setRegion({ 0, state.audioDuration() });
    state.followRegionEnd();
}

}  // namespace quillet
