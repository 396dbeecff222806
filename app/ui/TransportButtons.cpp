#include "app/ui/TransportButtons.h"

#include "app/ui/Symbol.h"
#include "app/ui/controls/Fonts.h"

#include <QPainter>
#include <QToolTip>

#include <cmath>

namespace quillet {
namespace {

/// Also of a tooltip that is open.
void changeToolTip(QWidget& widget, const QString& text)
{
    const bool isOpen = QToolTip::isVisible() && QToolTip::text() == widget.toolTip();
    widget.setToolTip(text);
    if (isOpen)
        QToolTip::showText(QCursor::pos(), text, &widget);
}

constexpr int playDiameter = 64;
constexpr int ringSpace = 4;
constexpr double playSymbolSize = 44;
constexpr QSize holdSize(76, 36);

}  // namespace

// ---- Play ----

PlayButton::PlayButton(const ThemeSource& source, QWidget* parent)
    : QAbstractButton(parent),
      m_source(source)
{
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setFixedSize(sizeHint());
    setPlaying(false);
    connect(&source, &ThemeSource::themeChanged, this, qOverload<>(&QWidget::update));
}

void PlayButton::setPlaying(bool isPlaying)
{
    m_isPlaying = isPlaying;
    const QString name = isPlaying ? tr("Pause") : tr("Play");
    changeToolTip(*this, name);
    setAccessibleName(name);
    update();
}

QSize PlayButton::sizeHint() const { return { playDiameter + 2 * ringSpace, playDiameter + 2 * ringSpace }; }

bool PlayButton::hitButton(const QPoint& place) const
{
    const QPointF fromMiddle = place - QRectF(rect()).center();
    return std::hypot(fromMiddle.x(), fromMiddle.y()) <= playDiameter / 2.0;
}

void PlayButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF middle = QRectF(rect()).center();
    const QColor fill = isDown() ? AppTheme::accentPurple.darker(115)
        : underMouse()           ? AppTheme::accentPurple.lighter(112)
                                 : AppTheme::accentPurple;
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawEllipse(middle, playDiameter / 2.0, playDiameter / 2.0);
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(m_source.theme().accentText, AppTheme::focusRingWidth));
        painter.drawEllipse(middle, playDiameter / 2.0 + 3, playDiameter / 2.0 + 3);
    }
    const QRectF place(middle.x() - playSymbolSize / 2, middle.y() - playSymbolSize / 2, playSymbolSize, playSymbolSize);
    paintSymbol(painter, m_isPlaying ? QStringLiteral("pause.fill") : QStringLiteral("play.fill"), place, AppTheme::onAccent);
}

// ---- Hold ----

HoldButton::HoldButton(const ThemeSource& source, QWidget* parent)
    : QAbstractButton(parent),
      m_source(source)
{
    setCheckable(true);
    setText(tr("Hold"));
    setFont(controlFont());
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setFixedSize(sizeHint());
    checkStateSet();
    connect(&source, &ThemeSource::themeChanged, this, qOverload<>(&QWidget::update));
}

QSize HoldButton::sizeHint() const { return { scaled(holdSize.width()), scaled(holdSize.height()) }; }

void HoldButton::checkStateSet()
{
    changeToolTip(*this, isChecked() ? tr("Exit Hold mode [H]") : tr("Hold — freeze on a short section [H]"));
}

void HoldButton::paintEvent(QPaintEvent*)
{
    const AppTheme& theme = m_source.theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor color = isChecked() ? theme.accentTextOnTint : theme.secondaryText;
    QColor fill = isChecked() ? withOpacity(AppTheme::accentPurple, AppTheme::tintOpacity) : QColor(Qt::transparent);
    if (underMouse() || isDown())
        fill = withOpacity(AppTheme::accentPurple, isDown() ? 0.3 : isChecked() ? AppTheme::tintOpacity + 0.05 : 0.08);
    painter.setBrush(fill);
    painter.setPen(QPen(isChecked() ? color : withOpacity(color, 0.4), 1.5));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), AppTheme::controlRadius, AppTheme::controlRadius);
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(theme.accentText, AppTheme::focusRingWidth));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), AppTheme::controlRadius, AppTheme::controlRadius);
    }
    painter.setPen(color);
    painter.drawText(rect(), Qt::AlignCenter, text());
}

}  // namespace quillet
