#include "app/waveform/WaveformView.h"

#include "AppCore/RegionClamp.h"
#include "AppCore/TimeRuler.h"
#include "AppCore/WaveformZoomPan.h"

#include <QGestureEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPinchGesture>
#include <QStyle>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quillet {
namespace {

constexpr double labelSpacing = 90;
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
constexpr int smallTickHeight = 4;
constexpr int tickHeight = 8;

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
    m_startHandle->setFocusColor(look.focus);
    m_endHandle->setFocusColor(look.focus);
    invalidateBars();
}

void WaveformView::setSamples(std::vector<float> samples)
{
    m_samples = std::move(samples);
    invalidateBars();
}

void WaveformView::setDuration(double seconds)
{
    if (std::exchange(m_duration, seconds) != seconds)
        invalidateBars();
}

void WaveformView::setRegion(const TimeRange& region)
{
    if (region == m_region)
        return;
    m_region = region;
    invalidateBars();
}

void WaveformView::setZoomAndPan(double zoomLevel, double panOffset)
{
    if (zoomLevel == m_zoomLevel && panOffset == m_panOffset)
        return;
    m_zoomLevel = zoomLevel;
    m_panOffset = panOffset;
    invalidateBars();
}

void WaveformView::invalidateBars()
{
    m_bars = QPixmap();
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

// ---- Drawing ----

void WaveformView::drawBars()
{
    const double scale = devicePixelRatioF();
    const int barsHeight = height() - rulerHeight;
    const double barsWidth = waveformWidth();
    m_bars = QPixmap(QSize(static_cast<int>(std::ceil(barsWidth * scale)), static_cast<int>(std::ceil(barsHeight * scale))));
    m_bars.setDevicePixelRatio(scale);
    m_bars.fill(m_look.ground);
    QPainter painter(&m_bars);
    paintWaveform(painter, m_samples, coordinates(), barsHeight, m_region, m_look.bars, 0, barsWidth);
}

void WaveformView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    const QRect exposed = event->rect();
    if (exposed.top() < rulerHeight)
        drawRuler(painter, exposed);
    if (exposed.bottom() < rulerHeight)
        return;
    if (m_bars.isNull() || m_bars.devicePixelRatio() != devicePixelRatioF())
        drawBars();
    for (const int x : { 0, width() - sideInset })
        painter.fillRect(x, rulerHeight, sideInset, height() - rulerHeight, m_look.ground);
    painter.drawPixmap(sideInset, rulerHeight, m_bars);
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
}

void WaveformView::resizeEvent(QResizeEvent* event)
{
    invalidateBars();
    const double old = std::exchange(m_panWidth, waveformWidth());
    if (m_onWidthChange && old != m_panWidth)
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
        setCursor(overHandle ? Qt::SizeHorCursor : Qt::ArrowCursor);
        return;
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
    case DragMode::none:
        break;
    }
}

void WaveformView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || m_dragMode == DragMode::none)
        return;
    m_dragMode = DragMode::none;
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
