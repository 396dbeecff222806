#include "app/ui/controls/Fader.h"
#include "app/ui/controls/DecimalText.h"

#include "AppCore/StemMix.h"

#include <QMouseEvent>
#include <QPainter>

#include <cmath>
#include <utility>

namespace quillet {
namespace {

constexpr int percent = 100;
constexpr int maxPercent = static_cast<int>(StemMix::maxVolume * percent);
constexpr QSize leastSize(96, 22);
constexpr double knobRadius = 7.5;
constexpr double trackWidth = 4;

}  // namespace

QString decibelLabel(double volume)
{
    constexpr double decibelsPerFactorOfTen = 20;
    if (volume <= 0)
        return Fader::tr("-∞ dB");
    const double decibels = std::round(10 * decibelsPerFactorOfTen * std::log10(volume)) / 10;
    // Without the sign that a zero may have.
    return Fader::tr("%1 dB").arg(decimalText(decibels == 0 ? 0.0 : decibels));
}

Fader::Fader(const ThemeSource& source, const QString& name, const QColor& color, QWidget* parent)
    : QSlider(Qt::Horizontal, parent),
      m_source(source),
      m_color(color)
{
    setAccessibleName(name);
    setRange(0, maxPercent);
    setValue(percent);
    setPageStep(10);
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover);
    connect(this, &QSlider::valueChanged, this, [this] {
        setToolTip(decibelLabel(volume()));
        if (!m_isTold && m_onMove)
            m_onMove(volume());
    });
    connect(&source, &ThemeSource::themeChanged, this, qOverload<>(&QWidget::update));
}

QSize Fader::sizeHint() const { return leastSize; }

double Fader::volume() const { return static_cast<double>(value()) / percent; }

void Fader::setVolume(double volume)
{
    m_isTold = true;
    setValue(static_cast<int>(std::lround(volume * percent)));
    m_isTold = false;
}

double Fader::xOf(int value) const { return knobRadius + 2 + (width() - 2 * (knobRadius + 2)) * value / maxPercent; }

void Fader::moveTo(double x)
{
    const double length = width() - 2 * (knobRadius + 2);
    setValue(static_cast<int>(std::round((x - knobRadius - 2) / length * maxPercent)));
}

bool Fader::isOnKnob(const QPointF& place) const
{
    return std::hypot(place.x() - xOf(value()), place.y() - height() / 2.0) <= knobRadius + 1;
}

void Fader::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_isDragged = true;
    m_grip = isOnKnob(event->position()) ? event->position().x() - xOf(value()) : 0;
    moveTo(event->position().x() - m_grip);
}

void Fader::mouseMoveEvent(QMouseEvent* event)
{
    if (m_isDragged)
        moveTo(event->position().x() - m_grip);
}

void Fader::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_isDragged = false;
    update();
}

/// Resets on the knob; beside it two clicks are two clicks.
void Fader::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && isOnKnob(event->position()))
        setValue(percent);
    else
        mousePressEvent(event);
}

/// The page under the pointer scrolls; a volume is not changed in passing.
void Fader::wheelEvent(QWheelEvent* event) { event->ignore(); }

void Fader::paintEvent(QPaintEvent*)
{
    const AppTheme& theme = m_source.theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(isEnabled() ? 1 : AppTheme::disabledOpacity);
    const double y = height() / 2.0;
    const double x = xOf(value());
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.track);
    painter.drawRoundedRect(QRectF(xOf(0), y - trackWidth / 2, xOf(maxPercent) - xOf(0), trackWidth), trackWidth / 2,
                            trackWidth / 2);
    painter.setBrush(m_color);
    painter.drawRoundedRect(QRectF(xOf(0), y - trackWidth / 2, x - xOf(0), trackWidth), trackWidth / 2, trackWidth / 2);
    painter.setBrush(theme.secondaryText);
    painter.drawRect(QRectF(xOf(percent) - 0.5, y - 5, 1, 10));
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(theme.accentText, AppTheme::focusRingWidth));
        painter.drawEllipse(QPointF(x, y), knobRadius + 2, knobRadius + 2);
        painter.setPen(Qt::NoPen);
    }
    painter.setBrush(underMouse() || m_isDragged ? m_color.lighter(115) : m_color);
    painter.drawEllipse(QPointF(x, y), knobRadius, knobRadius);
}

}  // namespace quillet
