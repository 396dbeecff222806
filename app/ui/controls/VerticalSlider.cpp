#include "app/ui/controls/VerticalSlider.h"
#include "app/ui/controls/DecimalText.h"

#include "platform/audio/AudioGraph.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quillet {
namespace {

constexpr QSize sliderSize(24, 140);
constexpr double stepsPerDecibel = 2;
constexpr double knobRadius = 8.5;
constexpr double trackWidth = 4;
constexpr int maxSteps = static_cast<int>(EqualizerNode::maximumGainDb * stepsPerDecibel);

/// Speaks decibels; the toolkit's own would speak steps.
class AccessibleGain final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit AccessibleGain(VerticalSlider* slider)
        : QAccessibleWidget(slider, QAccessible::Slider)
    {
    }

    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value ? VerticalSlider::tr("%1 dB").arg(gainLabel(slider().gain()))
                                          : QAccessibleWidget::text(kind);
    }
    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }
    [[nodiscard]] QVariant currentValue() const override { return slider().gain(); }
    void setCurrentValue(const QVariant& value) override
    {
        slider().setValue(static_cast<int>(std::lround(value.toDouble() * stepsPerDecibel)));
    }
    [[nodiscard]] QVariant maximumValue() const override { return EqualizerNode::maximumGainDb; }
    [[nodiscard]] QVariant minimumValue() const override { return -EqualizerNode::maximumGainDb; }
    [[nodiscard]] QVariant minimumStepSize() const override { return 1 / stepsPerDecibel; }

private:
    [[nodiscard]] VerticalSlider& slider() const { return *static_cast<VerticalSlider*>(widget()); }
};

QAccessibleInterface* accessibleGain(const QString&, QObject* object)
{
    auto* slider = qobject_cast<VerticalSlider*>(object);
    return slider != nullptr ? new AccessibleGain(slider) : nullptr;
}

}  // namespace

double snappedGain(double gainDb) { return std::round(gainDb * stepsPerDecibel) / stepsPerDecibel; }

QString gainLabel(double gainDb)
{
    const double snapped = snappedGain(gainDb);
    // Without the sign that a zero may have.
    return snapped == std::trunc(snapped) ? QString::number(static_cast<int>(snapped)) : decimalText(snapped);
}

VerticalSlider::VerticalSlider(const ThemeSource& source, const QString& name, QWidget* parent)
    : QSlider(Qt::Vertical, parent),
      m_source(source)
{
    static const bool installed = [] {
        QAccessible::installFactory(accessibleGain);
        return true;
    }();
    Q_UNUSED(installed)
    setAccessibleName(name);
    setRange(-maxSteps, maxSteps);
    setPageStep(static_cast<int>(stepsPerDecibel));
    setFocusPolicy(Qt::TabFocus);
    setFixedSize(sliderSize);
    setAttribute(Qt::WA_Hover);
    connect(this, &QSlider::valueChanged, this, [this] {
        if (!m_isTold && m_onMove)
            m_onMove(gain());
    });
    connect(&source, &ThemeSource::themeChanged, this, qOverload<>(&QWidget::update));
}

double VerticalSlider::gain() const { return value() / stepsPerDecibel; }

void VerticalSlider::setGain(double gainDb)
{
    m_isTold = true;
    setValue(static_cast<int>(std::round(gainDb * stepsPerDecibel)));
    m_isTold = false;
}

double VerticalSlider::yOf(int steps) const
{
    const double length = height() - 2 * (knobRadius + 2);
    return knobRadius + 2 + length * (maxSteps - steps) / (2 * maxSteps);
}

void VerticalSlider::moveTo(double y)
{
    const double length = height() - 2 * (knobRadius + 2);
    const double steps = maxSteps - (y - knobRadius - 2) / length * 2 * maxSteps;
    setValue(static_cast<int>(std::round(steps)));
}

void VerticalSlider::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_isDragged = true;
    // A knob stays where it is until it is moved; beside it the click says where to.
    m_grip = isOnKnob(event->position()) ? event->position().y() - yOf(value()) : 0;
    moveTo(event->position().y() - m_grip);
}

bool VerticalSlider::isOnKnob(const QPointF& place) const
{
    return std::hypot(place.x() - width() / 2.0, place.y() - yOf(value())) <= knobRadius + 1;
}

void VerticalSlider::mouseMoveEvent(QMouseEvent* event)
{
    if (m_isDragged)
        moveTo(event->position().y() - m_grip);
}

void VerticalSlider::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_isDragged = false;
    update();
}

/// Resets on the knob; beside it two clicks are two clicks.
void VerticalSlider::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && isOnKnob(event->position()))
        setValue(0);
    else
        mousePressEvent(event);
}

/// The page under the pointer scrolls; a gain is not changed in passing.
void VerticalSlider::wheelEvent(QWheelEvent* event) { event->ignore(); }

void VerticalSlider::paintEvent(QPaintEvent*)
{
    const AppTheme& theme = m_source.theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(isEnabled() ? 1 : AppTheme::disabledOpacity);
    const double x = width() / 2.0;
    const double y = yOf(value());
    const double middle = yOf(0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.track);
    painter.drawRoundedRect(QRectF(x - trackWidth / 2, yOf(maxSteps), trackWidth, yOf(-maxSteps) - yOf(maxSteps)),
                            trackWidth / 2, trackWidth / 2);
    painter.setBrush(theme.secondaryText);
    painter.drawRect(QRectF(x - 5, middle - 0.5, 10, 1));
    const bool isSet = value() != 0;
    if (isSet) {
        painter.setBrush(AppTheme::accentPurple);
        painter.drawRect(QRectF(x - trackWidth / 2, std::min(y, middle), trackWidth, std::abs(y - middle)));
    }
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(theme.accentText, AppTheme::focusRingWidth));
        painter.drawEllipse(QPointF(x, y), knobRadius + 2, knobRadius + 2);
    }
    painter.setBrush(isSet ? (underMouse() || m_isDragged ? AppTheme::accentPurple.lighter(115) : AppTheme::accentPurple)
                           : (underMouse() ? theme.fieldHover : theme.field));
    painter.setPen(isSet ? QPen(Qt::NoPen) : QPen(withOpacity(theme.text, 0.45), 1));
    painter.drawEllipse(QPointF(x, y), knobRadius, knobRadius);
}

}  // namespace quillet
