// Draws a waveform: bars for the amplitudes, the selected region in another colour. Handles, play head and ruler are the view's
// business, as is the ground on which it is drawn.
// Threads: any, for a painter of that thread.
#pragma once

#include "AppCore/TimeRange.h"
#include "AppCore/WaveformCoordinates.h"

#include <QColor>

#include <span>

class QPainter;

namespace quillet {

struct WaveformColors {
    QColor selected;
    QColor unselected;
};

/// Draws `samples` (0 to 1, spread evenly over the file) as seen through `coordinates`, from x = 0 to its view's width and
/// `height` points high, centred. Only what lies between `firstX` and `endX` (points) is drawn. Draws nothing for a file
/// without length. Each bar is as wide as its part of the file, less a gap of half a point; where bars are too narrow for gaps
/// they are columns of one device pixel, the highest of those that fall on it. Edges lie on device pixels, so nothing is
/// blurred at any scale.
void paintWaveform(QPainter& painter, std::span<const float> samples, const WaveformCoordinates& coordinates, double height,
                   const TimeRange& region, const WaveformColors& colors, double firstX, double endX);

}  // namespace quillet
