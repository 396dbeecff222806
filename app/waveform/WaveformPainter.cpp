#include "app/waveform/WaveformPainter.h"

#include <QPaintDevice>
#include <QPainter>
#include <QRectF>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace quillet {
namespace {

constexpr double gapPoints = 0.5;
constexpr double minBarPixels = 2;

/// One run over the visible columns of device pixels, in the pixels' own units.
class Columns {
public:
    Columns(QPainter& painter, double pixelsPerPoint, double heightPoints, const WaveformColors& colors)
        : m_painter(painter),
          m_pixel(1 / pixelsPerPoint),
          m_height(heightPoints),
          m_colors(colors)
    {
    }

    /// Columns [first, end), as high as `amplitude`. Neighbours that look alike become one rectangle.
    void add(std::int64_t first, std::int64_t end, float amplitude, bool isSelected)
    {
        const double half = std::round(m_height * static_cast<double>(amplitude) / m_pixel / 2) * m_pixel;
        if (first == m_end && half == m_half && isSelected == m_isSelected) {
            m_end = end;
            return;
        }
        flush();
        m_first = first;
        m_end = end;
        m_half = half;
        m_isSelected = isSelected;
    }

    void flush()
    {
        if (m_end > m_first && m_half > 0) {
            const double middle = std::round(m_height / m_pixel / 2) * m_pixel;
            const QRectF bar(static_cast<double>(m_first) * m_pixel, middle - m_half,
                             static_cast<double>(m_end - m_first) * m_pixel, 2 * m_half);
            m_painter.fillRect(bar, m_isSelected ? m_colors.selected : m_colors.unselected);
        }
        m_end = m_first;
    }

private:
    QPainter& m_painter;
    double m_pixel;
    double m_height;
    const WaveformColors& m_colors;
    std::int64_t m_first = 0;
    std::int64_t m_end = 0;
    double m_half = 0;
    bool m_isSelected = false;
};

}  // namespace

void paintWaveform(QPainter& painter, std::span<const float> samples, const WaveformCoordinates& coordinates, double height,
                   const TimeRange& region, const WaveformColors& colors, double firstX, double endX)
{
    if (samples.empty() || coordinates.duration <= 0 || coordinates.viewWidth <= 0)
        return;
    const double scale = painter.device()->devicePixelRatioF();
    const auto count = static_cast<double>(samples.size());
    const double step = coordinates.viewWidth * coordinates.zoomLevel / count;
    const auto isSelected = [&](std::int64_t index) {
        const double time = coordinates.duration * static_cast<double>(index) / count;
        return time >= region.start && time <= region.end;
    };
    const auto pixelAt = [&](double x) { return static_cast<std::int64_t>(std::round(x * scale)); };
    const auto indexAt = [&](double x) {
        return static_cast<std::int64_t>(std::clamp(std::floor((x + coordinates.panOffset) / step), 0.0, count - 1));
    };
    Columns columns(painter, scale, height, colors);
    const double left = std::max(firstX, 0.0);
    const double right = std::min({ endX, coordinates.viewWidth, count * step - coordinates.panOffset });
    if (right <= left)
        return;
    if ((step - gapPoints) * scale >= minBarPixels) {
        const auto gap = std::max<std::int64_t>(pixelAt(gapPoints), 1);
        for (std::int64_t i = indexAt(left); i <= indexAt(right); ++i) {
            const double x = step * static_cast<double>(i) - coordinates.panOffset;
            columns.add(pixelAt(x), pixelAt(x + step) - gap, samples[static_cast<std::size_t>(i)], isSelected(i));
        }
    } else {
        for (std::int64_t pixel = pixelAt(left); pixel < pixelAt(right); ++pixel) {
            const std::int64_t first = indexAt(static_cast<double>(pixel) / scale);
            const std::int64_t last = std::max(first, indexAt((static_cast<double>(pixel) + 1) / scale - 1e-9));
            const auto seen = samples.subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(last - first + 1));
            columns.add(pixel, pixel + 1, *std::ranges::max_element(seen), isSelected(first));
        }
    }
    columns.flush();
}

}  // namespace quillet
