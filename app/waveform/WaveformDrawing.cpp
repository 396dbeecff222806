// What WaveformView draws.
#include "AppCore/TimeRuler.h"
#include "app/waveform/WaveformView.h"

#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quillet {
namespace {

constexpr double labelSpacing = 90;
constexpr int smallTickHeight = 4;
constexpr int tickHeight = 8;
constexpr int spanThickness = 5;

}  // namespace

void WaveformView::drawWaveform()
{
    const double scale = devicePixelRatioF();
    const auto pixels = [scale](double points) { return static_cast<int>(std::ceil(points * scale)); };
    const QSize size(pixels(waveformWidth()), std::max(pixels(height() - rulerHeight), 1));
    if (m_waveform.size() != size)
        m_waveform = QImage(size, QImage::Format_RGB32);
    m_waveform.setDevicePixelRatio(scale);
    std::vector<ViewPart> asBars{ { 0, waveformWidth() } };
    if (m_detail != nullptr && m_duration > 0 && barsAreCoarse())
        asBars = paintDetail(m_waveform, *m_detail, coordinates(), m_region, m_detailColors);
    else
        m_waveform.fill(m_look.ground);
    m_isWaveformCurrent = true;
    QPainter painter(&m_waveform);
    for (const ViewPart& part : asBars)
        drawBars(painter, part);
}

void WaveformView::drawBars(QPainter& painter, const ViewPart& part)
{
    const int barsHeight = height() - rulerHeight;
    painter.setClipRect(QRectF(part.left, 0, part.right - part.left, barsHeight));
    paintWaveform(painter, m_samples, coordinates(), barsHeight, m_region, m_opaqueBars, part.left, part.right);
}

void WaveformView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    const QRect exposed = event->rect();
    if (exposed.top() < rulerHeight)
        drawRuler(painter, exposed);
    if (exposed.bottom() < rulerHeight)
        return;
    if (!m_isWaveformCurrent || m_waveform.devicePixelRatio() != devicePixelRatioF())
        drawWaveform();
    for (const int x : { 0, width() - sideInset })
        painter.fillRect(x, rulerHeight, sideInset, height() - rulerHeight, m_look.ground);
    painter.drawImage(sideInset, rulerHeight, m_waveform);
    if (m_samples.empty() || m_duration <= 0)
        return;
    drawHandle(painter, m_region.start, m_look.regionStart);
    drawHandle(painter, m_region.end, m_look.regionEnd);
    if (m_isPlaying) {
        const QRectF line(sideInset + timeToX(m_playhead.shown()) - playheadLineWidth / 2, rulerHeight, playheadLineWidth,
                          height() - rulerHeight);
        painter.fillRect(line, m_look.playhead);
    }
}

void WaveformView::drawHandle(QPainter& painter, double time, const QColor& color) const
{
    const double scale = devicePixelRatioF();
    // On a whole device pixel, so that the line is sharp.
    const double x = std::round((sideInset + timeToX(time)) * scale) / scale;
    // As far as it shows: it can be grabbed there.
    if (x < -handlePillWidth / 2 || x > width() + handlePillWidth / 2)
        return;
    painter.fillRect(QRectF(x - markerLineWidth / 2, rulerHeight, markerLineWidth, height() - rulerHeight), color);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    const double middle = rulerHeight + (height() - rulerHeight) / 2.0;
    painter.drawRoundedRect(QRectF(x - handlePillWidth / 2, middle - handlePillHeight / 2, handlePillWidth, handlePillHeight),
                            handlePillCornerRadius, handlePillCornerRadius);
    painter.restore();
}

void WaveformView::drawRuler(QPainter& painter, const QRectF& exposed) const
{
    painter.fillRect(QRectF(0, 0, width(), rulerHeight), m_look.ground);
    painter.setFont(m_look.rulerFont);
    for (const RulerTick& tick : rulerTicks(coordinates(), labelSpacing)) {
        const int length = tick.label.empty() ? smallTickHeight : tickHeight;
        painter.fillRect(QRectF(sideInset + std::floor(tick.x), rulerHeight - 6 - length, 1, length), m_look.rulerLine);
        const QRectF place(sideInset + tick.x + 4, 0, labelSpacing, rulerHeight - 6);
        const QString label = QString::fromStdString(tick.label);
        const bool fits = place.left() + painter.fontMetrics().horizontalAdvance(label) <= width();
        if (label.isEmpty() || !fits || !place.intersects(exposed))
            continue;
        painter.setPen(m_look.rulerText);
        painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter, label);
    }
    drawSpans(painter);
}

/// A line along the ruler's lower edge for each, short ones on long ones, as they are found by `spanAt`.
void WaveformView::drawSpans(QPainter& painter) const
{
    for (const std::size_t place : m_spanOrder) {
        const WaveformSpan& span = m_spans[place];
        const double left = std::clamp(timeToX(span.range.start), 0.0, waveformWidth());
        const double right = std::clamp(timeToX(span.range.end), 0.0, waveformWidth());
        if (right > left)
            painter.fillRect(QRectF(sideInset + left, rulerHeight - spanThickness, std::max(right - left, 2.0), spanThickness),
                             span.color);
    }
}

std::optional<std::size_t> WaveformView::spanAt(const QPointF& place) const
{
    if (place.y() >= rulerHeight)
        return std::nullopt;
    const double time = xToTime(place.x() - sideInset);
    const auto found = std::find_if(m_spanOrder.rbegin(), m_spanOrder.rend(), [this, time](std::size_t span) {
        return time >= m_spans[span].range.start && time <= m_spans[span].range.end;
    });
    return found != m_spanOrder.rend() ? std::optional(*found) : std::nullopt;
}

}  // namespace quillet
