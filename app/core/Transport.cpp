#include "app/core/Transport.h"

#include <algorithm>
#include <utility>

namespace quillet {

void Transport::togglePlayPause()
{
    if (m_values.m_isPlaying) {
        if (!m_values.m_holdEnabled)
            m_values.setPlaybackPosition(heardPosition());
        m_engine.pause();
        setPlaying(false);
        return;
    }
    if (m_values.m_holdEnabled) {
        setPlaying(m_engine.play(m_values.m_holdPosition, m_values.m_holdPosition + AppValues::holdWindowSize));
        return;
    }
    if (m_values.m_region.isEmpty())
        return;
    const double start = takeStart();
    m_values.setPlaybackPosition(start);
    setPlaying(m_engine.play(start, m_values.m_region.end));
}

/// Where it was parked, if the play head is still there; else the region's start.
double Transport::takeStart()
{
    const auto parked = std::exchange(m_parkedSeconds, std::nullopt);
    const TimeRange& region = m_values.m_region;
    const bool counts = parked == m_values.m_playbackPosition && *parked >= region.start && *parked < region.end;
    return counts ? *parked : region.start;
}

void Transport::seek(double seconds)
{
    const TimeRange& region = m_values.m_region;
    if (m_values.m_holdEnabled || !(seconds >= region.start && seconds < region.end))
        return;
    m_values.setPlaybackPosition(seconds);
    if (!m_values.m_isPlaying)
        m_parkedSeconds = seconds;
    else if (!m_engine.play(seconds, region.end))
        restartRegion();
}

void Transport::toggleHold()
{
    if (m_values.m_holdEnabled) {
        m_values.assign(m_values.m_holdEnabled, false, &AppValues::holdEnabledChanged);
        stopReset();
        return;
    }
    m_values.assign(m_values.m_holdEnabled, true, &AppValues::holdEnabledChanged);
    const double anchor = m_values.m_isPlaying ? m_values.m_playbackPosition : m_values.m_region.start;
    setPlaying(holdAt(std::max(0.0, std::min(m_values.m_audioDuration - AppValues::holdWindowSize, anchor))));
}

void Transport::stepHoldForward()
{
    const double last = std::max(0.0, m_values.m_audioDuration - AppValues::holdWindowSize);
    if (m_values.m_holdEnabled)
        holdAt(std::min(last, m_values.m_holdPosition + AppValues::holdStepSize));
}

void Transport::stepHoldBackward()
{
    if (m_values.m_holdEnabled)
        holdAt(std::max(0.0, m_values.m_holdPosition - AppValues::holdStepSize));
}

/// The engine takes the window from the `play` that follows, so nothing else tells it of the new place.
bool Transport::holdAt(double seconds)
{
    m_values.assign(m_values.m_holdPosition, seconds, &AppValues::holdPositionChanged);
    return m_engine.play(m_values.m_holdPosition, m_values.m_holdPosition + AppValues::holdWindowSize);
}

void Transport::stop()
{
    m_engine.stop();
    setPlaying(false);
}

void Transport::stopReset()
{
    stop();
    m_values.setPlaybackPosition(m_values.m_region.start);
}

void Transport::restartRegion()
{
    if (!m_values.m_isPlaying || m_values.m_holdEnabled)
        return;
    if (!m_engine.play(m_values.m_region.start, m_values.m_region.end))
        stopReset();
}

void Transport::followRegionEnd()
{
    if (m_values.m_isPlaying && !m_values.m_holdEnabled)
        m_engine.moveEnd(m_values.m_region.end);
}

double Transport::heardPosition()
{
    double seconds = m_values.m_playbackPosition;
    if (m_values.m_holdEnabled)
        seconds = m_values.m_holdPosition;
    else if (m_values.m_isPlaying)
        seconds = m_engine.heardSeconds().value_or(seconds);
    return std::clamp(seconds, 0.0, m_values.m_audioDuration);
}

void Transport::setPlaying(bool isPlaying) { m_values.setIsPlaying(isPlaying); }

}  // namespace quillet
