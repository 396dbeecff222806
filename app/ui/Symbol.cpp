#include "app/ui/Symbol.h"

#include "platform/base/Require.h"

#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <algorithm>
#include <cmath>

void loadQuilletDrawings() { Q_INIT_RESOURCE(drawings); }

namespace quillet {
namespace {

/// In the symbol's own colour, so that tinting is one fill.
QPixmap drawn(const QString& name, int pixels, const QColor& color)
{
    loadQuilletDrawings();
    QSvgRenderer drawing(QStringLiteral(":/symbols/") + name + QStringLiteral(".svg"));
    REQUIRE(drawing.isValid());
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    drawing.render(&painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), color);
    return pixmap;
}

QPixmap cached(const QString& name, double size, const QColor& color, double devicePixelRatio)
{
    const int pixels = std::max(1, static_cast<int>(std::lround(size * devicePixelRatio)));
    const QString key = QStringLiteral("symbol %1 %2 %3").arg(name).arg(pixels).arg(color.rgba(), 0, 16);
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = drawn(name, pixels, color);
        QPixmapCache::insert(key, pixmap);
    }
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

}  // namespace

void paintSymbol(QPainter& painter, const QString& name, const QRectF& place, const QColor& color)
{
    const double scale = painter.device()->devicePixelRatioF();
    const QPixmap pixmap = cached(name, place.width(), color, scale);
    // On whole device pixels, so that it is as sharp as it was drawn.
    const QPointF corner(std::round(place.x() * scale) / scale, std::round(place.y() * scale) / scale);
    painter.drawPixmap(corner, pixmap);
}

QPixmap symbolPixmap(const QString& name, int size, const QColor& color, double devicePixelRatio)
{
    return cached(name, size, color, devicePixelRatio);
}

QIcon applicationIcon()
{
    loadQuilletDrawings();
    // Drawn here: the toolkit's plugin for such icons is a package of its own on some systems.
    QSvgRenderer drawing(QStringLiteral(":/icons/quillet.svg"));
    REQUIRE(drawing.isValid());
    QIcon icon;
    for (const int size : { 16, 32, 64, 128 }) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        drawing.render(&painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

}  // namespace quillet
