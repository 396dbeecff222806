#include "app/ui/controls/Drawer.h"

#include <QStyle>
#include <QVariantAnimation>

namespace quillet {
namespace {

constexpr int slideMilliseconds = 160;

}  // namespace

Drawer::Drawer(QWidget* content, QWidget* parent)
    : QWidget(parent),
      m_content(content),
      m_slide(new QVariantAnimation(this))
{
    m_content->setParent(this);
    m_content->hide();
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    m_slide->setStartValue(0.0);
    m_slide->setEndValue(0.0);
    m_slide->setEasingCurve(QEasingCurve::OutCubic);
    connect(m_slide, &QVariantAnimation::valueChanged, this, &QWidget::updateGeometry);
}

void Drawer::setOpen(bool isOpen)
{
    const double place = m_slide->currentValue().toDouble();
    m_slide->stop();
    m_content->setVisible(isOpen);
    m_slide->setStartValue(place);
    m_slide->setEndValue(isOpen ? 1.0 : 0.0);
    const bool slides = isVisible() && style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    m_slide->setDuration(slides ? slideMilliseconds : 0);
    m_slide->start();
    updateGeometry();
}

QSize Drawer::sizeHint() const
{
    const QSize whole = m_content->sizeHint();
    return { whole.width(), qRound(whole.height() * m_slide->currentValue().toDouble()) };
}

void Drawer::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_content->setGeometry(0, 0, width(), m_content->sizeHint().height());
}

}  // namespace quillet
