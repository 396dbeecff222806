#include "app/ui/controls/Switch.h"

#include <QPainter>
#include <QStyle>
#include <QVariantAnimation>

namespace quillet {
namespace {

constexpr QSize trackSize(40, 22);
constexpr int ringSpace = 3;
constexpr double knobInset = 3;
constexpr int slideMilliseconds = 140;

}  // namespace

Switch::Switch(const ThemeSource& source, const QString& name, QWidget* parent)
    : QCheckBox(parent),
      m_source(source),
      m_slide(new QVariantAnimation(this))
{
    setAccessibleName(name);
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setFixedSize(sizeHint());
    m_slide->setDuration(slideMilliseconds);
    m_slide->setEasingCurve(QEasingCurve::OutCubic);
    m_slide->setEndValue(0.0);
    connect(m_slide, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    connect(this, &QAbstractButton::toggled, this, [this](bool isOn) {
        const double place = m_slide->currentValue().toDouble();
        m_slide->stop();
        m_slide->setStartValue(place);
        m_slide->setEndValue(isOn ? 1.0 : 0.0);
        const bool animates = isVisible() && style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
        m_slide->setDuration(animates ? slideMilliseconds : 0);
        m_slide->start();
    });
    connect(&source, &ThemeSource::themeChanged, this, qOverload<>(&QWidget::update));
}

QSize Switch::sizeHint() const { return trackSize + QSize(2 * ringSpace, 2 * ringSpace); }

void Switch::paintEvent(QPaintEvent*)
{
    const AppTheme& theme = m_source.theme();
    const double place = m_slide->currentValue().toDouble();
    const QRectF track = QRectF(ringSpace, ringSpace, trackSize.width(), trackSize.height());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(isEnabled() ? 1 : AppTheme::disabledOpacity);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.track);
    painter.drawRoundedRect(track, track.height() / 2, track.height() / 2);
    painter.setBrush(withOpacity(underMouse() ? AppTheme::accentPurple.lighter(112) : AppTheme::accentPurple, place));
    painter.drawRoundedRect(track, track.height() / 2, track.height() / 2);
    const double knob = track.height() - 2 * knobInset;
    const double x = track.left() + knobInset + place * (track.width() - knob - 2 * knobInset);
    painter.setBrush(AppTheme::onAccent);
    painter.setPen(QPen(theme.fieldLine, 1 - place));
    painter.drawEllipse(QRectF(x, track.top() + knobInset, knob, knob));
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(theme.accentText, AppTheme::focusRingWidth));
        const QRectF ring = QRectF(rect()).adjusted(1, 1, -1, -1);
        painter.drawRoundedRect(ring, ring.height() / 2, ring.height() / 2);
    }
}

}  // namespace quillet
