// The program's own symbols, one drawing for each name, in whatever colour and size is asked for; and its icon.
// Threads: main thread.
#pragma once

#include <QColor>
#include <QIcon>
#include <QRectF>
#include <QString>

class QPainter;

namespace quillet {

/// Draws resources/symbols/`name` into `place`, a square, sharp at the painter's scale. There is such a drawing (REQUIRE).
void paintSymbol(QPainter& painter, const QString& name, const QRectF& place, const QColor& color);

/// The same as a picture of `size` points.
[[nodiscard]] QPixmap symbolPixmap(const QString& name, int size, const QColor& color, double devicePixelRatio);

[[nodiscard]] QIcon applicationIcon();

}  // namespace quillet
