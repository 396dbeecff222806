#include "AppCore/WaveformZoomPan.h"

#include <algorithm>

namespace quillet {
namespace {

using WaveformZoomPan::Extent;
using WaveformZoomPan::ZoomPan;

double maxPan(double zoom, double viewWidth) { return (zoom - 1) * viewWidth; }

ZoomPan placed(double zoom, const Extent& extent, double regionStart)
{
    const double fraction = extent.audioDuration > 0 ? regionStart / extent.audioDuration : 0;
    const double pan = fraction * extent.viewWidth * zoom - WaveformZoomPan::fitMargin * extent.viewWidth;
    return { zoom, std::min(std::max(pan, 0.0), maxPan(zoom, extent.viewWidth)) };
}

}  // namespace

double WaveformZoomPan::panLeft(double current, double viewWidth) { return std::max(current - panStep * viewWidth, 0.0); }

double WaveformZoomPan::panRight(ZoomPan current, double viewWidth)
{
    return std::min(current.pan + panStep * viewWidth, maxPan(current.zoom, viewWidth));
}

ZoomPan WaveformZoomPan::zoomIn(double current, const Extent& extent, double regionStart)
{
    return placed(std::min(current * 2, max), extent, regionStart);
}

ZoomPan WaveformZoomPan::zoomOut(double current, const Extent& extent, double regionStart)
{
    return placed(std::max(current * 0.5, min), extent, regionStart);
}

ZoomPan WaveformZoomPan::magnified(ZoomPan current, double magnification, double anchorX, double viewWidth)
{
    const double zoom = std::clamp(current.zoom * (1 + magnification), min, max);
    const double pan = (anchorX + current.pan) / current.zoom * zoom - anchorX;
    return { zoom, std::clamp(pan, 0.0, maxPan(zoom, viewWidth)) };
}

std::optional<ZoomPan> WaveformZoomPan::fitRegion(double regionStart, double regionEnd, const Extent& extent)
{
    const double length = regionEnd - regionStart;
    if (extent.audioDuration <= 0 || length <= 0)
        return std::nullopt;
    constexpr double regionShare = 1 - 2 * fitMargin;
    return placed(std::clamp(extent.audioDuration * regionShare / length, min, max), extent, regionStart);
}

}  // namespace quillet
