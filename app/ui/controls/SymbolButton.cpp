#include "app/ui/controls/SymbolButton.h"

#include "app/ui/Symbol.h"
#include "app/ui/controls/Fonts.h"

#include <QPainter>
#include <QStyleOptionButton>

#include <algorithm>

namespace quillet {

SymbolButton::SymbolButton(const ThemeSource& source, const QString& symbol, const QString& name, ButtonKind kind,
                           int symbolSize, QWidget* parent)
    : QPushButton(parent),
      m_source(source),
      m_symbol(symbol),
      m_kind(kind),
      m_symbolSize(symbolSize)
{
    setButtonKind(*this, kind);
    setAccessibleName(name);
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(&source, &ThemeSource::themeChanged, this, qOverload<>(&QWidget::update));
}

QSize SymbolButton::sizeHint() const
{
    const int side = std::max(scaled(AppTheme::controlHeight), m_symbolSize + 12);
    return { side, side };
}

void SymbolButton::paintEvent(QPaintEvent*)
{
    QStyleOptionButton option;
    initStyleOption(&option);
    QPainter painter(this);
    style()->drawControl(QStyle::CE_PushButtonBevel, &option, &painter, this);
    QColor color = m_kind == ButtonKind::toolbar ? AppTheme::onToolbar : m_source.theme().text;
    if (!isEnabled())
        color = withOpacity(color, AppTheme::disabledOpacity);
    const QRectF place((width() - m_symbolSize) / 2.0, (height() - m_symbolSize) / 2.0, m_symbolSize, m_symbolSize);
    paintSymbol(painter, m_symbol, place, color);
}

}  // namespace quillet
