#include "AppCore/WaveformCoordinates.h"

#include <algorithm>

namespace quillet {

double WaveformCoordinates::timeToX(double time) const
{
    const double fraction = duration > 0 ? time / duration : 0;
    return fraction * viewWidth * zoomLevel - panOffset;
}

double WaveformCoordinates::xToTime(double x) const
{
    const double contentWidth = viewWidth * zoomLevel;
    const double fraction = contentWidth > 0 ? (x + panOffset) / contentWidth : 0;
    return std::max(std::min(fraction * duration, duration), 0.0);
}

}  // namespace quillet
