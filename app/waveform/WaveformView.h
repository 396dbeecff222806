// Shows a file's waveform with the selected region, its two handles and the play head, under a ruler of times; and turns
// mouse, wheel, pinch and keys on it into wishes: another region, another zoom. Zoomed in, it shows the sound itself as far as
// it is given that, and the bars where it is not. It owns none of what it shows and changes
// none of it by itself: whoever hosts it hears of the wish, decides, and sets the new values.
// Threads: main thread.
#pragma once

#include "AppCore/WaveformCoordinates.h"
#include "app/waveform/PlayheadMotion.h"
#include "app/waveform/RegionHandle.h"
#include "app/waveform/WaveformDetailPainter.h"
#include "app/waveform/WaveformPainter.h"

#include <QBasicTimer>
#include <QColor>
#include <QElapsedTimer>
#include <QFont>
#include <QImage>
#include <QWidget>

#include <algorithm>
#include <functional>
#include <optional>
#include <vector>

namespace quillet {

struct WaveformLook {
    WaveformColors bars;
    QColor ground;
    QColor regionStart;
    QColor regionEnd;
    QColor playhead;
    QColor rulerText;
    QColor rulerLine;
    QColor focus;
    /// Of the ruler's times.
    QFont rulerFont = {};
};

/// A part of the file that the ruler shows.
struct WaveformSpan {
    TimeRange range;
    QColor color;
};

class WaveformView final : public QWidget {
    Q_OBJECT

public:
    static constexpr double handleHitRadius = 8;
    static constexpr double markerLineWidth = 2;
    static constexpr double playheadLineWidth = 2;
    static constexpr double handlePillWidth = 10;
    static constexpr double handlePillHeight = 28;
    static constexpr double handlePillCornerRadius = 4;
    /// Points at the top that the ruler takes.
    static constexpr int rulerHeight = 26;
    /// Points left and right of the waveform: room for a handle at either end.
    static constexpr int sideInset = 8;
    /// Device pixels of a bar that is too coarse.
    static constexpr double coarseBarPixels = 3;

    explicit WaveformView(QWidget* parent = nullptr);
    ~WaveformView() override;

    // ---- What is shown ----

    void setLook(const WaveformLook& look);
    void setSamples(std::vector<float> samples);
    /// What is to be seen closely, null if there is nothing; it stays valid until the next call, and has changed in `part`.
    void setDetail(const WaveformDetail* detail, const SongPart& part);
    /// Seconds.
    void setDuration(double seconds);
    void setRegion(const TimeRange& region);
    /// Seconds, as reported now and then: in between, the play head moves on by itself at `setPlaybackRate` (file seconds per
    /// second, 1 is normal).
    void setPlaybackPosition(double seconds);
    void setPlaybackRate(double rate);
    void setPlaying(bool isPlaying);
    void setZoomAndPan(double zoomLevel, double panOffset);
    void setSpans(std::vector<WaveformSpan> spans);

    /// Points that the waveform has, what zoom and pan are counted in.
    [[nodiscard]] double waveformWidth() const { return std::max(width() - 2 * sideInset, 1); }
    /// `x` in points from the waveform's left edge in view.
    [[nodiscard]] double xToTime(double x) const { return coordinates().xToTime(x); }
    [[nodiscard]] double timeToX(double time) const { return coordinates().timeToX(time); }
    [[nodiscard]] WaveformCoordinates coordinates() const;
    /// What is in view, if that is but a part.
    [[nodiscard]] std::optional<SongPart> partInView() const;
    [[nodiscard]] bool isDragging() const { return m_dragMode != DragMode::none; }

    // ---- What the user wishes ----

    void onRegionChange(std::function<void(const TimeRange& region)> wish) { m_onRegionChange = std::move(wish); }
    /// A drag is over, or a key that moved a handle.
    void onDragEnded(std::function<void()> ended) { m_onDragEnded = std::move(ended); }
    /// A span was clicked in the ruler; `isUrgent`: with Alt.
    void onSpanClick(std::function<void(std::size_t span, bool isUrgent)> clicked) { m_onSpanClick = std::move(clicked); }
    /// The view was clicked: fields that are being edited lose the focus.
    void onResignFocus(std::function<void()> resign) { m_onResignFocus = std::move(resign); }
    void onZoomChange(std::function<void(double zoom, double pan)> wish) { m_onZoomChange = std::move(wish); }
    /// The view has become so many times as wide: a pan grows with it if the same place is to stay in view.
    void onWidthChange(std::function<void(double factor)> changed) { m_onWidthChange = std::move(changed); }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    enum class DragMode { none, span, newRegion, startHandle, endHandle };

    [[nodiscard]] DragMode handleAt(double x) const;
    [[nodiscard]] std::optional<std::size_t> spanAt(const QPointF& place) const;
    void dragTo(double x);
    void magnify(double magnification, double anchorX);
    void moveHandle(RegionHandle::Side side, RegionHandle::Move move);
    void wishRegion(const TimeRange& region);

    void invalidateWaveform();
    void placeHandles();
    [[nodiscard]] bool barsAreCoarse() const;
    void drawWaveform();
    void drawBars(QPainter& painter, const ViewPart& part);
    void drawRuler(QPainter& painter, const QRectF& exposed) const;
    void drawSpans(QPainter& painter) const;
    void drawHandle(QPainter& painter, double time, const QColor& color) const;
    [[nodiscard]] QRect playheadStrip(double seconds) const;

    void followPlayback();
    void advancePlayhead();
    [[nodiscard]] double secondsSinceFrame() const;

    WaveformLook m_look;
    DetailColors m_detailColors;
    /// The bars' colours as they are on the ground: the toolkit hands every rectangle that lets something shine through to a
    /// pool of threads, which costs more than it saves.
    WaveformColors m_opaqueBars;
    std::vector<float> m_samples;
    const WaveformDetail* m_detail = nullptr;
    double m_duration = 1;
    TimeRange m_region{ 0, 1 };
    std::vector<WaveformSpan> m_spans;
    /// Their places, the longest one's first.
    std::vector<std::size_t> m_spanOrder;
    double m_zoomLevel = 1;
    double m_panOffset = 0;

    bool m_isPlaying = false;
    PlayheadMotion m_playhead;
    QElapsedTimer m_sinceFrame;
    QBasicTimer m_frames;

    DragMode m_dragMode = DragMode::none;
    /// Where the drag of a new region began, points.
    double m_dragAnchor = 0;
    /// The one that was pressed.
    std::size_t m_pressedSpan = 0;

    /// What pan is counted in now, points.
    double m_panWidth = waveformWidth();
    bool m_wasShown = false;

    /// The waveform, in device pixels.
    QImage m_waveform;
    bool m_isWaveformCurrent = false;
    RegionHandle* m_startHandle;
    RegionHandle* m_endHandle;

    std::function<void(const TimeRange& region)> m_onRegionChange;
    std::function<void()> m_onDragEnded;
    std::function<void(std::size_t span, bool isUrgent)> m_onSpanClick;
    std::function<void()> m_onResignFocus;
    std::function<void(double zoom, double pan)> m_onZoomChange;
    std::function<void(double factor)> m_onWidthChange;
};

}  // namespace quillet
