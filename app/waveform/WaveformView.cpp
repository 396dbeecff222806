#include "app/waveform/WaveformView.h"

#include "AppCore/RegionClamp.h"
#include "AppCore/WaveformZoomPan.h"

#include <QApplication>
#include <QGestureEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPinchGesture>
#include <QStyle>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <utility>

namespace quillet {
namespace {

constexpr int frameMilliseconds = 16;
/// Points that one notch of a wheel (120 eighths of a degree) stands for.
constexpr double pointsPerNotch = 40;
constexpr double notch = 120;
constexpr double zoomPerNotch = 0.2;
/// What one point of a touch pad's scrolling zooms with Ctrl held.
constexpr double zoomPerPoint = 0.005;
constexpr double fineStep = 0.01;
constexpr double coarseStep = 1;
constexpr int handleFocusWidth = 18;

/// What `color` looks like on `ground`.
QColor opaqueOn(const QColor& ground, const QColor& color)
{
    QImage pixel(1, 1, QImage::Format_RGB32);
    pixel.fill(ground);
    QPainter(&pixel).fillRect(pixel.rect(), color);
    return pixel.pixelColor(0, 0);
}

}  // namespace

WaveformView::WaveformView(QWidget* parent)
    : QWidget(parent),
      m_startHandle(new RegionHandle(RegionHandle::Side::start, this)),
      m_endHandle(new RegionHandle(RegionHandle::Side::end, this))
{
    setAccessibleName(tr("Waveform"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAttribute(Qt::WA_OpaquePaintEvent);
    grabGesture(Qt::PinchGesture);
    for (RegionHandle* handle : { m_startHandle, m_endHandle }) {
        handle->onMove([this, handle](RegionHandle::Move move) { moveHandle(handle->side(), move); });
        handle->onMoveEnded([this] {
            if (m_onDragEnded)
                m_onDragEnded();
        });
    }
}

WaveformView::~WaveformView() = default;

QSize WaveformView::sizeHint() const { return { 900, 220 }; }

QSize WaveformView::minimumSizeHint() const { return { 200, 150 }; }

WaveformCoordinates WaveformView::coordinates() const { return { m_duration, waveformWidth(), m_zoomLevel, m_panOffset }; }

// ---- What is shown ----

void WaveformView::setLook(const WaveformLook& look)
{
    m_look = look;
    m_detailColors = detailColors(look.bars, look.ground);
    m_opaqueBars = { opaqueOn(look.ground, look.bars.selected), opaqueOn(look.ground, look.bars.unselected) };
    m_startHandle->setFocusColor(look.focus);
    m_endHandle->setFocusColor(look.focus);
    invalidateWaveform();
}

void WaveformView::setSamples(std::vector<float> samples)
{
    m_samples = std::move(samples);
    invalidateWaveform();
}

void WaveformView::setDetail(const WaveformDetail* detail, const SongPart& part)
{
    m_detail = detail;
    const auto seen = partInView();
    if (seen && barsAreCoarse() && part.end > seen->first && part.first < seen->end)
        invalidateWaveform();
}

std::optional<SongPart> WaveformView::partInView() const
{
    if (m_samples.empty() || m_duration <= 0 || m_zoomLevel <= 1)
        return std::nullopt;
    const double whole = waveformWidth() * m_zoomLevel;
    return SongPart{ m_panOffset / whole, (m_panOffset + waveformWidth()) / whole };
}

bool WaveformView::barsAreCoarse() const
{
    const double pixels = waveformWidth() * m_zoomLevel * devicePixelRatioF();
    return m_zoomLevel > 1 && pixels >= coarseBarPixels * static_cast<double>(m_samples.size());
}

void WaveformView::setDuration(double seconds)
{
    if (std::exchange(m_duration, seconds) != seconds)
        invalidateWaveform();
}

void WaveformView::setRegion(const TimeRange& region)
{
    if (region == m_region)
        return;
    m_region = region;
    invalidateWaveform();
}

void WaveformView::setSpans(std::vector<WaveformSpan> spans)
{
    m_spans = std::move(spans);
    m_spanOrder.resize(m_spans.size());
    std::iota(m_spanOrder.begin(), m_spanOrder.end(), std::size_t{ 0 });
    const auto length = [this](std::size_t span) { return m_spans[span].range.end - m_spans[span].range.start; };
    std::ranges::sort(m_spanOrder, [&length](std::size_t one, std::size_t other) {
        return length(one) != length(other) ? length(one) > length(other) : one < other;
    });
    update(0, 0, width(), rulerHeight);
}

void WaveformView::setZoomAndPan(double zoomLevel, double panOffset)
{
    if (zoomLevel == m_zoomLevel && panOffset == m_panOffset)
        return;
    m_zoomLevel = zoomLevel;
    m_panOffset = panOffset;
    invalidateWaveform();
}

void WaveformView::invalidateWaveform()
{
    m_isWaveformCurrent = false;
    placeHandles();
    update();
}

void WaveformView::placeHandles()
{
    for (auto [handle, time] : { std::pair(m_startHandle, m_region.start), std::pair(m_endHandle, m_region.end) }) {
        handle->setTime(time, m_duration);
        const int x = sideInset + static_cast<int>(std::clamp(timeToX(time), 0.0, waveformWidth()));
        handle->setGeometry(x - handleFocusWidth / 2, rulerHeight, handleFocusWidth, height() - rulerHeight);
    }
}

// ---- The play head ----

void WaveformView::setPlaying(bool isPlaying)
{
    if (std::exchange(m_isPlaying, isPlaying) == isPlaying)
        return;
    m_playhead.rest();
    followPlayback();
    update();
}

void WaveformView::setPlaybackRate(double rate) { m_playhead.setRate(rate); }

void WaveformView::setPlaybackPosition(double seconds) { m_playhead.report(seconds, secondsSinceFrame()); }

double WaveformView::secondsSinceFrame() const
{
    return m_sinceFrame.isValid() ? static_cast<double>(m_sinceFrame.nsecsElapsed()) * 1e-9 : 0;
}

/// Frames are drawn only while something moves and can be seen.
void WaveformView::followPlayback()
{
    if (m_isPlaying && isVisible()) {
        m_sinceFrame.start();
        m_frames.start(frameMilliseconds, Qt::PreciseTimer, this);
    } else {
        m_frames.stop();
    }
}

void WaveformView::showEvent(QShowEvent* event)
{
    m_wasShown = true;
    followPlayback();
    QWidget::showEvent(event);
}

void WaveformView::hideEvent(QHideEvent* event)
{
    followPlayback();
    QWidget::hideEvent(event);
}

void WaveformView::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == m_frames.timerId())
        advancePlayhead();
    else
        QWidget::timerEvent(event);
}

void WaveformView::advancePlayhead()
{
    const QRect old = playheadStrip(m_playhead.shown());
    m_playhead.advance(secondsSinceFrame(), m_region.end);
    m_sinceFrame.start();
    const QRect now = playheadStrip(m_playhead.shown());
    if (old != now)
        update(QRegion(old) | now);
}

QRect WaveformView::playheadStrip(double seconds) const
{
    const double x = sideInset + timeToX(seconds);
    const int left = static_cast<int>(std::floor(x - playheadLineWidth));
    return { left, rulerHeight, static_cast<int>(2 * playheadLineWidth) + 1, height() - rulerHeight };
}

void WaveformView::resizeEvent(QResizeEvent* event)
{
    invalidateWaveform();
    const double old = std::exchange(m_panWidth, waveformWidth());
    // Before it is shown it has the toolkit's size, which no pan was counted in.
    if (m_onWidthChange && m_wasShown && old != m_panWidth)
        m_onWidthChange(m_panWidth / old);
    QWidget::resizeEvent(event);
}

// ---- Mouse ----

WaveformView::DragMode WaveformView::handleAt(double x) const
{
    const double toStart = std::abs(x - timeToX(m_region.start));
    const double toEnd = std::abs(x - timeToX(m_region.end));
    if (toStart <= handleHitRadius && toStart <= toEnd)
        return DragMode::startHandle;
    return toEnd <= handleHitRadius ? DragMode::endHandle : DragMode::none;
}

void WaveformView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    if (m_onResignFocus)
        m_onResignFocus();
    const double x = event->position().x() - sideInset;
    if (const auto span = spanAt(event->position())) {
        m_dragMode = DragMode::span;
        m_pressedSpan = *span;
        m_dragAnchor = x;
        return;
    }
    m_dragMode = handleAt(x);
    if (m_dragMode == DragMode::none) {
        m_dragMode = DragMode::newRegion;
        m_dragAnchor = x;
        setCursor(Qt::CrossCursor);
    } else {
        setCursor(Qt::SizeHorCursor);
    }
}

void WaveformView::mouseMoveEvent(QMouseEvent* event)
{
    setMouseTracking(true);
    const double x = event->position().x() - sideInset;
    if (m_dragMode == DragMode::none) {
        const bool overHandle = !m_samples.empty() && handleAt(x) != DragMode::none;
        setCursor(overHandle ? Qt::SizeHorCursor : spanAt(event->position()) ? Qt::PointingHandCursor : Qt::ArrowCursor);
        return;
    }
    // Whoever goes on from a span draws a region.
    if (m_dragMode == DragMode::span && std::abs(x - m_dragAnchor) >= QApplication::startDragDistance()) {
        m_dragMode = DragMode::newRegion;
        setCursor(Qt::CrossCursor);
    }
    dragTo(x);
}

void WaveformView::dragTo(double x)
{
    const double time = xToTime(x);
    switch (m_dragMode) {
    case DragMode::newRegion:
        wishRegion(RegionClamp::clampNewRegion(time, xToTime(m_dragAnchor), m_duration));
        break;
    case DragMode::startHandle:
        wishRegion({ RegionClamp::clampStart(time, m_region.end), m_region.end });
        break;
    case DragMode::endHandle:
        wishRegion({ m_region.start, RegionClamp::clampEnd(time, m_region.start, m_duration) });
        break;
    case DragMode::span:
    case DragMode::none:
        break;
    }
}

void WaveformView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || m_dragMode == DragMode::none)
        return;
    if (std::exchange(m_dragMode, DragMode::none) == DragMode::span) {
        if (m_onSpanClick && m_pressedSpan < m_spans.size())
            m_onSpanClick(m_pressedSpan, (event->modifiers() & Qt::AltModifier) != 0);
        return;
    }
    setCursor(handleAt(event->position().x() - sideInset) != DragMode::none ? Qt::SizeHorCursor : Qt::ArrowCursor);
    if (m_onDragEnded)
        m_onDragEnded();
}

void WaveformView::wishRegion(const TimeRange& region)
{
    if (m_onRegionChange)
        m_onRegionChange(region);
}

// ---- Keys ----

void WaveformView::moveHandle(RegionHandle::Side side, RegionHandle::Move move)
{
    const bool isStart = side == RegionHandle::Side::start;
    double time = isStart ? m_region.start : m_region.end;
    switch (move) {
    case RegionHandle::Move::fineEarlier:
        time -= fineStep;
        break;
    case RegionHandle::Move::fineLater:
        time += fineStep;
        break;
    case RegionHandle::Move::coarseEarlier:
        time -= coarseStep;
        break;
    case RegionHandle::Move::coarseLater:
        time += coarseStep;
        break;
    case RegionHandle::Move::toFirst:
        time = 0;
        break;
    case RegionHandle::Move::toLast:
        time = m_duration;
        break;
    }
    if (isStart)
        wishRegion({ RegionClamp::clampStart(time, m_region.end), m_region.end });
    else
        wishRegion({ m_region.start, RegionClamp::clampEnd(time, m_region.start, m_duration) });
}

// ---- Wheel and pinch ----

void WaveformView::wheelEvent(QWheelEvent* event)
{
    const QPointF notches = QPointF(event->angleDelta()) / notch;
    const bool isFine = !event->pixelDelta().isNull();
    const QPointF points = isFine ? QPointF(event->pixelDelta()) : notches * pointsPerNotch;
    if ((event->modifiers() & Qt::ControlModifier) != 0) {
        const double amount = isFine ? points.y() * zoomPerPoint : notches.y() * zoomPerNotch;
        magnify(amount, event->position().x() - sideInset);
        event->accept();
        return;
    }
    // A wheel that only turns one way pans with Shift held.
    const bool isShifted = (event->modifiers() & Qt::ShiftModifier) != 0 && points.x() == 0;
    const double delta = isShifted ? points.y() : points.x();
    if (m_zoomLevel <= 1 || delta == 0) {
        event->ignore();
        return;
    }
    const double pan = std::clamp(m_panOffset - 2 * delta, 0.0, (m_zoomLevel - 1) * waveformWidth());
    if (m_onZoomChange)
        m_onZoomChange(m_zoomLevel, pan);
    event->accept();
}

void WaveformView::magnify(double magnification, double anchorX)
{
    const auto wish = WaveformZoomPan::magnified({ m_zoomLevel, m_panOffset }, magnification, anchorX, waveformWidth());
    if (m_onZoomChange)
        m_onZoomChange(wish.zoom, wish.pan);
}

bool WaveformView::event(QEvent* event)
{
    const double middle = waveformWidth() / 2;
    if (event->type() == QEvent::NativeGesture) {
        const auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            magnify(gesture->value(), middle);
            return true;
        }
    }
    if (event->type() == QEvent::Gesture) {
        auto* gestures = static_cast<QGestureEvent*>(event);
        if (const auto* pinch = static_cast<QPinchGesture*>(gestures->gesture(Qt::PinchGesture))) {
            magnify(pinch->scaleFactor() - 1, middle);
            gestures->accept();
            return true;
        }
    }
    if (event->type() == QEvent::Enter)
        setMouseTracking(true);
    return QWidget::event(event);
}

}  // namespace quillet
