#include "app/waveform/RegionHandle.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QTimer>

#include <cmath>
#include <optional>

namespace quillet {
namespace {

constexpr double ringWidth = 2;
constexpr double ringRadius = 6;

/// The slider that a screen reader finds.
class AccessibleHandle final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit AccessibleHandle(RegionHandle* handle)
        : QAccessibleWidget(handle, QAccessible::Slider)
    {
    }

    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value ? spokenTime(handle().time()) : QAccessibleWidget::text(kind);
    }
    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }

    [[nodiscard]] QVariant currentValue() const override { return handle().time(); }
    void setCurrentValue(const QVariant& value) override
    {
        handle().wishMove(value.toDouble() < handle().time() ? RegionHandle::Move::fineEarlier : RegionHandle::Move::fineLater);
    }
    [[nodiscard]] QVariant maximumValue() const override { return handle().duration(); }
    [[nodiscard]] QVariant minimumValue() const override { return 0.0; }
    [[nodiscard]] QVariant minimumStepSize() const override { return 0.01; }

private:
    [[nodiscard]] RegionHandle& handle() const { return *static_cast<RegionHandle*>(widget()); }
};

QAccessibleInterface* accessibleHandle(const QString&, QObject* object)
{
    auto* handle = qobject_cast<RegionHandle*>(object);
    return handle != nullptr ? new AccessibleHandle(handle) : nullptr;
}

std::optional<RegionHandle::Move> moveOf(const QKeyEvent& event)
{
    using Move = RegionHandle::Move;
    if ((event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0)
        return std::nullopt;
    const bool coarse = (event.modifiers() & Qt::ShiftModifier) != 0;
    switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
        return coarse ? Move::coarseEarlier : Move::fineEarlier;
    case Qt::Key_Right:
    case Qt::Key_Up:
        return coarse ? Move::coarseLater : Move::fineLater;
    case Qt::Key_PageDown:
        return Move::coarseEarlier;
    case Qt::Key_PageUp:
        return Move::coarseLater;
    case Qt::Key_Home:
        return Move::toFirst;
    case Qt::Key_End:
        return Move::toLast;
    default:
        return std::nullopt;
    }
}

}  // namespace

QString spokenTime(double seconds)
{
    const auto hundredths = static_cast<qint64>(seconds * 100);
    const qint64 minutes = hundredths / 6000;
    QString rest = RegionHandle::tr("%1 seconds").arg(static_cast<double>(hundredths % 6000) / 100, 0, 'f', 2);
    if (minutes == 0)
        return rest;
    return minutes == 1 ? RegionHandle::tr("1 minute %1").arg(rest) : RegionHandle::tr("%1 minutes %2").arg(minutes).arg(rest);
}

RegionHandle::RegionHandle(Side side, QWidget* parent)
    : QWidget(parent),
      m_side(side)
{
    static const bool installed = [] {
        QAccessible::installFactory(accessibleHandle);
        return true;
    }();
    Q_UNUSED(installed)
    setAccessibleName(side == Side::start ? tr("Region start") : tr("Region end"));
    setAccessibleDescription(tr("Arrow keys move it by a hundredth of a second, with Shift by a second"));
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void RegionHandle::setFocusColor(const QColor& color)
{
    m_focusColor = color;
    update();
}

void RegionHandle::setTime(double seconds, double durationSeconds)
{
    m_duration = durationSeconds;
    if (seconds == m_time)
        return;
    m_time = seconds;
    QAccessibleValueChangeEvent changed(this, seconds);
    QAccessible::updateAccessibility(&changed);
}

void RegionHandle::keyPressEvent(QKeyEvent* event)
{
    const auto wanted = moveOf(*event);
    if (wanted)
        m_onMove(*wanted);
    else
        QWidget::keyPressEvent(event);
}

void RegionHandle::keyReleaseEvent(QKeyEvent* event)
{
    if (!event->isAutoRepeat() && moveOf(*event))
        m_onMoveEnded();
    else
        QWidget::keyReleaseEvent(event);
}

void RegionHandle::focusInEvent(QFocusEvent* event)
{
    update();
    QWidget::focusInEvent(event);
}

void RegionHandle::focusOutEvent(QFocusEvent* event)
{
    update();
    QWidget::focusOutEvent(event);
}

void RegionHandle::paintEvent(QPaintEvent*)
{
    if (!hasFocus())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(m_focusColor, ringWidth));
    constexpr double inset = ringWidth / 2;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), ringRadius, ringRadius);
}

}  // namespace quillet
