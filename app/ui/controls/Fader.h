// A horizontal fader for a volume of 0 to 150 %, in whole percents. A double click on its knob sets it to 100 %.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QSlider>

#include <functional>

namespace quillet {

/// "-6.0 dB" for a linear factor; silence has no number.
[[nodiscard]] QString decibelLabel(double volume);

class Fader final : public QSlider {
    Q_OBJECT

public:
    /// `name` is what a screen reader calls it; `color` shows how far it is open.
    Fader(const ThemeSource& source, const QString& name, const QColor& color, QWidget* parent = nullptr);

    /// A linear factor.
    [[nodiscard]] double volume() const;
    /// Shows another one; nobody is told.
    void setVolume(double volume);
    /// `moved` is called with the volume for every move of the user.
    void onMove(std::function<void(double volume)> moved) { m_onMove = std::move(moved); }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    [[nodiscard]] double xOf(int percent) const;
    void moveTo(double x);
    [[nodiscard]] bool isOnKnob(const QPointF& place) const;

    const ThemeSource& m_source;
    QColor m_color;
    std::function<void(double volume)> m_onMove;
    bool m_isDragged = false;
    /// Where the knob was grabbed, points right of its centre.
    double m_grip = 0;
    bool m_isTold = false;
};

}  // namespace quillet
