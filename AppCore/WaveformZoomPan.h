// The rules of zooming and panning the waveform by commands. Zooming places the view by the selected region's start, not
// by the pointer: a little left of it stands a margin, wherever the zoom allows one. It holds no view; it answers what the
// next one is.
// Threads: callable from every thread.
#pragma once

#include <optional>

namespace quillet::WaveformZoomPan {

/// The zoom's bounds: how many views wide the whole waveform is.
inline constexpr double min = 1.0;
inline constexpr double max = 50.0;
/// Fractions of the view's width: a step of panning, and the margin left of the region's start.
inline constexpr double panStep = 0.5;
inline constexpr double fitMargin = 0.05;

struct ZoomPan {
    double zoom = min;
    /// Points from the waveform's left end to the view's left edge: 0 to (zoom - 1) views.
    double pan = 0;

    bool operator==(const ZoomPan&) const = default;
};

/// What is shown, and on what.
struct Extent {
    /// Seconds.
    double audioDuration = 0;
    /// Points.
    double viewWidth = 0;
};

/// The pan, half a view further; `viewWidth` and the pan `current` are points.
[[nodiscard]] double panLeft(double current, double viewWidth);
[[nodiscard]] double panRight(ZoomPan current, double viewWidth);

/// Twice and half the zoom `current`, at the region's start (seconds).
[[nodiscard]] ZoomPan zoomIn(double current, const Extent& extent, double regionStart);
[[nodiscard]] ZoomPan zoomOut(double current, const Extent& extent, double regionStart);

/// The zoom times 1 + `magnification`, with what is seen `anchorX` points from the view's left edge staying there as far as the
/// bounds of both allow: what a pinch or a wheel asks for.
[[nodiscard]] ZoomPan magnified(ZoomPan current, double magnification, double anchorX, double viewWidth);

/// The region (seconds) across the view with a margin on each side, as far as the zoom's bounds allow. Nothing for an empty
/// region or file.
[[nodiscard]] std::optional<ZoomPan> fitRegion(double regionStart, double regionEnd, const Extent& extent);

}  // namespace quillet::WaveformZoomPan
