#include "app/ui/QuilletStyle.h"

#include "app/ui/Symbol.h"
#include "app/ui/controls/Fonts.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>
#include <QStyleFactory>
#include <QStyleOption>
#include <QToolTip>

#include <algorithm>

namespace quillet {
namespace {

constexpr const char* kindProperty = "quilletButtonKind";
constexpr int buttonPadding = 14;
constexpr int chevronSize = 12;
constexpr int scrollBarWidth = 12;
constexpr int shortestScrollHandle = 32;
constexpr double toolbarLineOpacity = 0.22;

ButtonKind kindOf(const QWidget* widget)
{
    const QVariant kind = widget != nullptr ? widget->property(kindProperty) : QVariant();
    return kind.isValid() ? static_cast<ButtonKind>(kind.toInt()) : ButtonKind::plain;
}

bool isOnToolbar(ButtonKind kind) { return kind == ButtonKind::toolbar || kind == ButtonKind::toolbarDanger; }

/// Half a pen inside the rectangle, so that the line is not cut off.
QRectF insetBy(const QRectF& rect, double amount) { return rect.adjusted(amount, amount, -amount, -amount); }

void drawFocusRing(QPainter& painter, const QRectF& rect, double radius, const QColor& color)
{
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(color, AppTheme::focusRingWidth));
    painter.drawRoundedRect(insetBy(rect, AppTheme::focusRingWidth / 2.0), radius, radius);
}

}  // namespace

void setButtonKind(QAbstractButton& button, ButtonKind kind)
{
    button.setProperty(kindProperty, static_cast<int>(kind));
    button.update();
}

QuilletStyle::QuilletStyle(const ThemeSource& source)
    : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))),
      m_source(source)
{
}

QPalette QuilletStyle::standardPalette() const
{
    const AppTheme& theme = m_source.theme();
    QPalette palette;
    const auto set = [&](QPalette::ColorRole role, const QColor& color) { palette.setColor(role, color); };
    set(QPalette::Window, theme.window);
    set(QPalette::WindowText, theme.text);
    set(QPalette::Base, theme.field);
    set(QPalette::AlternateBase, theme.card);
    set(QPalette::Text, theme.text);
    set(QPalette::Button, theme.field);
    set(QPalette::ButtonText, theme.text);
    set(QPalette::BrightText, AppTheme::onAccent);
    set(QPalette::Highlight, AppTheme::accentPurple);
    set(QPalette::HighlightedText, AppTheme::onAccent);
    set(QPalette::Link, theme.accentText);
    set(QPalette::ToolTipBase, AppTheme::navy);
    set(QPalette::ToolTipText, AppTheme::cream);
    set(QPalette::PlaceholderText, theme.secondaryText);
    set(QPalette::Light, theme.field);
    set(QPalette::Midlight, theme.card);
    set(QPalette::Mid, theme.track);
    set(QPalette::Dark, theme.secondaryText);
    set(QPalette::Shadow, QColor(0, 0, 0, 60));
    for (const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText })
        palette.setColor(QPalette::Disabled, role, withOpacity(theme.text, AppTheme::disabledOpacity));
    return palette;
}

void QuilletStyle::polish(QWidget* widget)
{
    QProxyStyle::polish(widget);
    if (qobject_cast<QAbstractButton*>(widget) != nullptr || qobject_cast<QScrollBar*>(widget) != nullptr)
        widget->setAttribute(Qt::WA_Hover);
}

int QuilletStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const
{
    switch (metric) {
    case PM_ScrollBarExtent:
        return scrollBarWidth;
    case PM_ScrollBarSliderMin:
        return shortestScrollHandle;
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
    case PM_ScrollView_ScrollBarSpacing:
        return 0;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int QuilletStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget, QStyleHintReturn* data) const
{
    switch (hint) {
    case SH_UnderlineShortcut:
    case SH_EtchDisabledText:
    case SH_DialogButtonBox_ButtonsHaveIcons:
        return 0;
    default:
        return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

QSize QuilletStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                     const QWidget* widget) const
{
    if (type == CT_ComboBox)
        return { size.width() + 3 * buttonPadding + chevronSize, scaled(AppTheme::controlHeight) };
    if (type != CT_PushButton)
        return QProxyStyle::sizeFromContents(type, option, size, widget);
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    const QString text = button != nullptr ? button->text : QString();
    const int width = option->fontMetrics.horizontalAdvance(text) + 2 * buttonPadding;
    return { std::max(width, scaled(AppTheme::controlHeight)), scaled(AppTheme::controlHeight) };
}

// ---- Buttons ----

QColor QuilletStyle::textOf(ButtonKind kind, const QStyleOption& option) const
{
    const AppTheme& theme = m_source.theme();
    QColor color = theme.text;
    if (kind == ButtonKind::accent || (kind == ButtonKind::segment && (option.state & State_On) != 0))
        color = AppTheme::onAccent;
    else if (kind == ButtonKind::toolbar)
        color = AppTheme::onToolbar;
    else if (kind == ButtonKind::toolbarDanger)
        color = QColor(0xFF, 0x8A, 0x8A);
    return (option.state & State_Enabled) != 0 ? color : withOpacity(color, AppTheme::disabledOpacity);
}

void QuilletStyle::drawButton(const QStyleOptionButton& option, QPainter& painter, const QWidget* widget) const
{
    const AppTheme& theme = m_source.theme();
    const ButtonKind kind = kindOf(widget);
    const bool isEnabled = (option.state & State_Enabled) != 0;
    const bool isPressed = isEnabled && (option.state & State_Sunken) != 0;
    const bool isHovered = isEnabled && (option.state & State_MouseOver) != 0;
    const bool isFilled = kind == ButtonKind::accent || (kind == ButtonKind::segment && (option.state & State_On) != 0);
    QColor fill = isPressed ? theme.fieldPressed : isHovered ? theme.fieldHover : theme.field;
    QColor line = theme.fieldLine;
    if (isFilled) {
        fill = isPressed ? AppTheme::accentPurple.darker(115)
            : isHovered  ? AppTheme::accentPurple.lighter(112)
                         : AppTheme::accentPurple;
        line = Qt::transparent;
    } else if (isOnToolbar(kind)) {
        fill = withOpacity(AppTheme::onToolbar, isPressed ? 0.26 : isHovered ? 0.18 : 0.10);
        line = withOpacity(AppTheme::onToolbar, toolbarLineOpacity);
    } else if (kind == ButtonKind::bare) {
        fill = withOpacity(theme.accentText, isPressed ? 0.24 : isHovered ? 0.12 : 0);
        line = Qt::transparent;
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(isEnabled ? 1 : AppTheme::disabledOpacity);
    painter.setBrush(fill);
    painter.setPen(line.alpha() == 0 ? QPen(Qt::NoPen) : QPen(line, 1));
    painter.drawRoundedRect(insetBy(option.rect, 0.5), AppTheme::controlRadius, AppTheme::controlRadius);
    painter.setOpacity(1);
    if ((option.state & State_HasFocus) != 0 && (option.state & State_KeyboardFocusChange) != 0)
        drawFocusRing(painter, option.rect, AppTheme::controlRadius,
                      isOnToolbar(kind) ? AppTheme::onToolbar
                          : isFilled    ? theme.text
                                        : theme.accentText);
    painter.restore();
}

void QuilletStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const
{
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    if (element == CE_PushButtonBevel && button != nullptr) {
        drawButton(*button, *painter, widget);
    } else if (element == CE_PushButtonLabel && button != nullptr) {
        painter->setPen(textOf(kindOf(widget), *option));
        painter->drawText(option->rect, Qt::AlignCenter | Qt::TextShowMnemonic | Qt::TextHideMnemonic, button->text);
    } else if (const auto* choice = qstyleoption_cast<const QStyleOptionComboBox*>(option);
               element == CE_ComboBoxLabel && choice != nullptr) {
        painter->setPen(textOf(ButtonKind::plain, *option));
        painter->drawText(option->rect.adjusted(buttonPadding, 0, -buttonPadding - chevronSize, 0),
                          Qt::AlignLeft | Qt::AlignVCenter, choice->currentText);
    } else if (const auto* bar = qstyleoption_cast<const QStyleOptionProgressBar*>(option);
               element == CE_ProgressBar && bar != nullptr) {
        drawProgressBar(*bar, *painter);
    } else {
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

// ---- Fields ----

void QuilletStyle::drawField(const QStyleOption& option, QPainter& painter, const QWidget* widget) const
{
    const AppTheme& theme = m_source.theme();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity((option.state & State_Enabled) != 0 ? 1 : AppTheme::disabledOpacity);
    painter.setBrush(theme.field);
    painter.setPen(QPen(theme.fieldLine, 1));
    painter.drawRoundedRect(insetBy(option.rect, 0.5), AppTheme::controlRadius, AppTheme::controlRadius);
    if (widget != nullptr && widget->hasFocus())
        drawFocusRing(painter, option.rect, AppTheme::controlRadius, theme.accentText);
    painter.restore();
}

void QuilletStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const
{
    switch (element) {
    case PE_PanelLineEdit:
        drawField(*option, *painter, widget);
        break;
    case PE_FrameFocusRect:
        if ((option->state & State_KeyboardFocusChange) != 0) {
            painter->save();
            painter->setRenderHint(QPainter::Antialiasing);
            drawFocusRing(*painter, option->rect, AppTheme::controlRadius, m_source.theme().accentText);
            painter->restore();
        }
        break;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

// ---- Scroll bars ----

QRect QuilletStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                                   const QWidget* widget) const
{
    const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control != CC_ScrollBar || bar == nullptr)
        return QProxyStyle::subControlRect(control, option, part, widget);
    // No buttons at the ends: the handle has the whole length.
    const bool isVertical = bar->orientation == Qt::Vertical;
    const QRect groove = bar->rect;
    const int length = isVertical ? groove.height() : groove.width();
    const int range = bar->maximum - bar->minimum;
    const int handle = range <= 0
        ? length
        : std::clamp(static_cast<int>(static_cast<qint64>(length) * bar->pageStep / (range + bar->pageStep)),
                     std::min(shortestScrollHandle, length), length);
    const int start =
        sliderPositionFromValue(bar->minimum, bar->maximum, bar->sliderPosition, length - handle, bar->upsideDown);
    const auto piece = [&](int from, int size) {
        return isVertical ? QRect(groove.left(), groove.top() + from, groove.width(), size)
                          : QRect(groove.left() + from, groove.top(), size, groove.height());
    };
    switch (part) {
    case SC_ScrollBarGroove:
        return groove;
    case SC_ScrollBarSlider:
        return piece(start, handle);
    case SC_ScrollBarSubPage:
        return piece(0, start);
    case SC_ScrollBarAddPage:
        return piece(start + handle, length - start - handle);
    default:
        return {};
    }
}

void QuilletStyle::drawScrollBar(const QStyleOptionSlider& option, QPainter& painter) const
{
    const QRectF handle = subControlRect(CC_ScrollBar, &option, SC_ScrollBarSlider, nullptr);
    const bool isActive = (option.state & (State_MouseOver | State_Sunken)) != 0;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(withOpacity(m_source.theme().text, isActive ? 0.45 : 0.25));
    const QRectF shape = insetBy(handle, 3);
    const double radius = std::min(shape.width(), shape.height()) / 2;
    painter.drawRoundedRect(shape, radius, radius);
    painter.restore();
}

void QuilletStyle::drawProgressBar(const QStyleOptionProgressBar& option, QPainter& painter) const
{
    QRectF part = option.rect;
    const double radius = part.height() / 2;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_source.theme().track);
    painter.drawRoundedRect(part, radius, radius);
    // Without a range nobody knows how far it is.
    const int range = option.maximum - option.minimum;
    if (range > 0 && option.progress > option.minimum) {
        part.setWidth(std::max(part.height(), part.width() * (option.progress - option.minimum) / range));
        painter.setBrush(AppTheme::accentPurple);
        painter.drawRoundedRect(part, radius, radius);
    }
    painter.restore();
}

void QuilletStyle::drawChoice(const QStyleOptionComplex& option, QPainter& painter, const QWidget* widget) const
{
    QStyleOptionButton button;
    button.QStyleOption::operator=(option);
    drawButton(button, painter, widget);
    const QRectF place(option.rect.right() - buttonPadding - chevronSize + 1.0,
                       option.rect.center().y() - chevronSize / 2.0 + 0.5, chevronSize, chevronSize);
    paintSymbol(painter, QStringLiteral("chevron.down"), place, textOf(ButtonKind::plain, option));
}

void QuilletStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                      const QWidget* widget) const
{
    const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control == CC_ScrollBar && bar != nullptr)
        drawScrollBar(*bar, *painter);
    else if (control == CC_ComboBox)
        drawChoice(*option, *painter, widget);
    else
        QProxyStyle::drawComplexControl(control, option, painter, widget);
}

}  // namespace quillet
