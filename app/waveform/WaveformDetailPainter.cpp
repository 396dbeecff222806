#include "app/waveform/WaveformDetailPainter.h"

#include <QImage>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace quillet {
namespace {

/// Of what bars cover of the ground: the power is to be told from the extremes, and these from the ground.
constexpr double extremesCoverOnLight = 0.55;
constexpr double extremesCoverOnDark = 0.85;
constexpr double translucentPowerCover = 2.2;
/// White in a strong colour on a dark ground.
constexpr double lightening = 0.35;
constexpr int middleLightness = 128;

/// `over`, as far as it covers times `part`, on `ground`.
QColor mixed(const QColor& ground, const QColor& over, double part)
{
    const double share = std::min(static_cast<double>(over.alphaF()) * part, 1.0);
    const auto between = [share](int from, int to) { return static_cast<int>(std::lround(from + (to - from) * share)); };
    return { between(ground.red(), over.red()), between(ground.green(), over.green()), between(ground.blue(), over.blue()) };
}

/// Rows of device pixels [top, bottom).
struct Rows {
    int top = 0;
    int bottom = 0;
};

/// What a row of the image needs of every column, each in an array of its own, for the processor's vectors.
struct Columns {
    explicit Columns(int count)
        : top(static_cast<std::size_t>(count)),
          bottom(top),
          powerTop(top),
          powerBottom(top),
          color(top.size()),
          powerColor(color)
    {
    }

    std::vector<int> top;
    std::vector<int> bottom;
    std::vector<int> powerTop;
    std::vector<int> powerBottom;
    std::vector<QRgb> color;
    std::vector<QRgb> powerColor;
};

/// Around the middle of `height` rows; at least one, so that silence is a line.
Rows rowsOf(double lowest, double highest, int height)
{
    const double half = height / 2.0;
    const auto rowAt = [&](double amplitude) {
        return std::clamp(static_cast<int>(std::round(half - amplitude * half)), 0, height);
    };
    const int top = std::min(rowAt(highest), height - 1);
    return { top, std::max(rowAt(lowest), top + 1) };
}

void fill(QImage& image, const Columns& columns, QRgb ground)
{
    const int* top = columns.top.data();
    const int* bottom = columns.bottom.data();
    const int* powerTop = columns.powerTop.data();
    const int* powerBottom = columns.powerBottom.data();
    const QRgb* colors = columns.color.data();
    const QRgb* powerColors = columns.powerColor.data();
    const int width = image.width();
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            // All is read whatever is needed of it: without branches.
            const QRgb color = colors[x];
            const QRgb powerColor = powerColors[x];
            const bool isWithin = (y >= top[x]) & (y < bottom[x]);
            const bool isPower = (y >= powerTop[x]) & (y < powerBottom[x]);
            const QRgb around = isWithin ? color : ground;
            line[x] = isPower ? powerColor : around;
        }
    }
}

}  // namespace

DetailColors detailColors(const WaveformColors& bars, const QColor& ground)
{
    const bool isDark = ground.lightness() < middleLightness;
    return { mixed(ground, bars.selected, isDark ? extremesCoverOnDark : extremesCoverOnLight),
             mixed(bars.selected, Qt::white, isDark ? lightening : 0), mixed(ground, bars.unselected, 1),
             mixed(ground, bars.unselected, translucentPowerCover), ground };
}

std::vector<ViewPart> paintDetail(QImage& image, const WaveformDetail& detail, const WaveformCoordinates& coordinates,
                                  const TimeRange& region, const DetailColors& colors)
{
    const double scale = image.devicePixelRatio();
    const int width = image.width();
    const int rows = image.height();
    const double framesPerPoint =
        static_cast<double>(detail.layout().length()) / (coordinates.viewWidth * coordinates.zoomLevel);
    const auto frameAt = [&](int pixel) { return (pixel / scale + coordinates.panOffset) * framesPerPoint; };
    const double factor = detail.loudest() > 0 ? 1.0 / static_cast<double>(detail.loudest()) : 1.0;
    Columns columns(width);
    std::vector<ViewPart> missing;
    for (int pixel = 0; pixel < width; ++pixel) {
        const auto place = static_cast<std::size_t>(pixel);
        const auto seen = detail.column(frameAt(pixel), frameAt(pixel + 1));
        if (!seen) {
            if (missing.empty() || missing.back().right < pixel / scale)
                missing.push_back({ pixel / scale, pixel / scale });
            missing.back().right = (pixel + 1) / scale;
            continue;
        }
        const double time = coordinates.xToTime(pixel / scale);
        const bool isSelected = time >= region.start && time <= region.end;
        const double power = std::sqrt(static_cast<double>(seen->meanSquare)) * factor;
        const double lowest = static_cast<double>(seen->lowest) * factor;
        const double highest = static_cast<double>(seen->highest) * factor;
        const Rows extremes = rowsOf(lowest, highest, rows);
        const Rows loud = rowsOf(std::max(-power, lowest), std::min(power, highest), rows);
        columns.top[place] = extremes.top;
        columns.bottom[place] = extremes.bottom;
        columns.powerTop[place] = loud.top;
        columns.powerBottom[place] = loud.bottom;
        columns.color[place] = (isSelected ? colors.selected : colors.unselected).rgb();
        columns.powerColor[place] = (isSelected ? colors.selectedPower : colors.unselectedPower).rgb();
    }
    fill(image, columns, colors.ground.rgb());
    return missing;
}

}  // namespace quillet
