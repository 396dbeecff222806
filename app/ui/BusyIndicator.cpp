#include "app/ui/BusyIndicator.h"

#include <QPainter>
#include <QStyle>
#include <QTimerEvent>

namespace quillet {
namespace {

constexpr int frameMilliseconds = 33;
constexpr int degreesPerFrame = 12;
constexpr int arcDegrees = 270;
/// QPainter counts in sixteenths.
constexpr int perDegree = 16;

}  // namespace

BusyIndicator::BusyIndicator(const ThemeSource& source, const QColor& color, int size, QWidget* parent)
    : QWidget(parent),
      m_source(source),
      m_color(color)
{
    setFixedSize(size, size);
    setAccessibleName(tr("Loading"));
}

void BusyIndicator::showEvent(QShowEvent*)
{
    if (style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0)
        m_timer.start(frameMilliseconds, this);
}

void BusyIndicator::hideEvent(QHideEvent*) { m_timer.stop(); }

void BusyIndicator::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != m_timer.timerId()) {
        QWidget::timerEvent(event);
        return;
    }
    m_angle = (m_angle - degreesPerFrame + 360) % 360;
    update();
}

void BusyIndicator::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double stroke = width() / 9.0;
    const QRectF circle = QRectF(rect()).adjusted(stroke, stroke, -stroke, -stroke);
    painter.setPen(QPen(m_color.isValid() ? m_color : m_source.theme().accentText, stroke, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(circle, m_angle * perDegree, arcDegrees * perDegree);
}

}  // namespace quillet
