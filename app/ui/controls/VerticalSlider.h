// A vertical slider for a gain of -12 to 12 dB that moves in half decibels.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QSlider>

#include <functional>

namespace quillet {

/// To the nearest half decibel, halves away from zero.
[[nodiscard]] double snappedGain(double gainDb);

/// "3", "-1.5": the snapped gain without a plus and a unit.
[[nodiscard]] QString gainLabel(double gainDb);

class VerticalSlider final : public QSlider {
    Q_OBJECT

public:
    /// `name` is what a screen reader calls it.
    VerticalSlider(const ThemeSource& source, const QString& name, QWidget* parent = nullptr);

    /// The gain shown, snapped.
    [[nodiscard]] double gain() const;
    /// Shows another one; nobody is told.
    void setGain(double gainDb);
    /// `moved` is called with the snapped gain for every move of the user.
    void onMove(std::function<void(double gainDb)> moved) { m_onMove = std::move(moved); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    [[nodiscard]] double yOf(int steps) const;
    void moveTo(double y);
    [[nodiscard]] bool isOnKnob(const QPointF& place) const;

    const ThemeSource& m_source;
    std::function<void(double gainDb)> m_onMove;
    bool m_isDragged = false;
    /// Where the knob was grabbed, points below its centre.
    double m_grip = 0;
    bool m_isTold = false;
};

}  // namespace quillet
