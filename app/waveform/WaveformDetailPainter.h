// Draws a waveform closely: for every column of device pixels what is in it, from the lowest to the highest sample in one tone
// and its power in a stronger one. What is not known yet it leaves to whoever draws the bars.
// Threads: any.
#pragma once

#include "AppCore/TimeRange.h"
#include "AppCore/WaveformCoordinates.h"
#include "app/waveform/WaveformDetail.h"
#include "app/waveform/WaveformPainter.h"

#include <QColor>

#include <vector>

class QImage;

namespace quillet {

/// All opaque.
struct DetailColors {
    QColor selected;
    QColor selectedPower;
    QColor unselected;
    QColor unselectedPower;
    QColor ground;
};

/// The tones that go with those of the bars on that ground.
[[nodiscard]] DetailColors detailColors(const WaveformColors& bars, const QColor& ground);

/// A part of the view's width, points from its left edge.
struct ViewPart {
    double left = 0;
    double right = 0;
};

/// Fills `image`, which is not empty, is as large as the view in device pixels and has 32 bits for each, with `detail`, spread
/// evenly over the file, as seen through `coordinates`; its loudest sample is as high as half of the image. Returns the parts
/// where there is only ground since nothing is known yet, left to right.
[[nodiscard]] std::vector<ViewPart> paintDetail(QImage& image, const WaveformDetail& detail,
                                                const WaveformCoordinates& coordinates, const TimeRange& region,
                                                const DetailColors& colors);

}  // namespace quillet
