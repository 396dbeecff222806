#include "app/ui/controls/Card.h"

#include <QPainter>

namespace quillet {

Card::Card(const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_source(source)
{
    connect(&source, &ThemeSource::themeChanged, this, qOverload<>(&QWidget::update));
}

void Card::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(m_source.theme().card);
    painter.setPen(QPen(m_source.theme().cardLine, 1));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), AppTheme::cardRadius, AppTheme::cardRadius);
}

}  // namespace quillet
