// A turning arc: something is going on. It stands still where the system asks for reduced motion, and costs nothing while it
// cannot be seen.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QBasicTimer>
#include <QWidget>

namespace quillet {

class BusyIndicator final : public QWidget {
    Q_OBJECT

public:
    /// `color` invalid: the theme's accent. `size` in points.
    BusyIndicator(const ThemeSource& source, const QColor& color, int size, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    const ThemeSource& m_source;
    QColor m_color;
    QBasicTimer m_timer;
    int m_angle = 90;
};

}  // namespace quillet
