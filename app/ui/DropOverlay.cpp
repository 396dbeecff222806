#include "app/ui/DropOverlay.h"

#include "app/ui/Symbol.h"
#include "app/ui/controls/Fonts.h"

#include <QPainter>

namespace quillet {
namespace {

constexpr int inset = 10;
constexpr double radius = 8;
constexpr double lineWidth = 3;
constexpr double dashLength = 8;
constexpr double fillOpacity = 0.85;
constexpr double lineOpacity = 0.5;
constexpr int symbolSize = 64;
constexpr int textPixels = 20;

}  // namespace

DropOverlay::DropOverlay(const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_source(source)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void DropOverlay::setDrag(Drag drag)
{
    m_drag = drag;
    setVisible(drag != Drag::none);
    setAccessibleName(drag == Drag::audio ? tr("Drop Audio File Here") : tr("File Not Supported"));
    raise();
    update();
}

void DropOverlay::paintEvent(QPaintEvent*)
{
    const bool isAudio = m_drag == Drag::audio;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor color = isAudio ? AppTheme::navy : AppTheme::red;
    QPen pen(withOpacity(color, lineOpacity), lineWidth);
    pen.setDashPattern({ dashLength / lineWidth, dashLength / lineWidth });
    painter.setPen(pen);
    painter.setBrush(withOpacity(AppTheme::cream, fillOpacity));
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), radius, radius);
    const QPointF middle = QRectF(rect()).center();
    paintSymbol(painter, isAudio ? QStringLiteral("waveform.badge.plus") : QStringLiteral("xmark.circle"),
                QRectF(middle.x() - symbolSize / 2.0, middle.y() - symbolSize - 4, symbolSize, symbolSize), color);
    QFont font = titleFont();
    font.setPixelSize(scaled(textPixels));
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(QRectF(0, middle.y() + 12, width(), 2.0 * scaled(textPixels)), Qt::AlignHCenter | Qt::AlignTop,
                     accessibleName());
}

}  // namespace quillet
