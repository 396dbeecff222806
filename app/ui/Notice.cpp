#include "app/ui/Notice.h"

#include "app/ui/controls/Label.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>

namespace quillet {
namespace {

constexpr int padding = 8;

}  // namespace

Notice::Notice(const ThemeSource& source, const QString& sentence, QWidget* parent)
    : QWidget(parent),
      m_source(source),
      m_label(new Label(source, Label::Role::text, {})),
      m_row(new QHBoxLayout(this))
{
    m_label->setTextFormat(Qt::PlainText);
    m_label->setAlignment(Qt::AlignCenter);
    m_label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_row->setContentsMargins(AppTheme::windowMargin, padding, AppTheme::windowMargin, padding);
    m_row->setSpacing(padding);
    m_row->addWidget(m_label, 1);
    setSentence(sentence);
}

void Notice::setSentence(const QString& sentence)
{
    m_sentence = sentence;
    setAccessibleName(sentence);
    m_label->setAccessibleName(sentence);
    m_label->setToolTip(sentence);
    fitSentence();
}

QPushButton& Notice::addButton(const QString& title)
{
    auto* button = new QPushButton(title);
    button->setFocusPolicy(Qt::TabFocus);
    m_row->addWidget(button);
    return *button;
}

void Notice::paintEvent(QPaintEvent*) { QPainter(this).fillRect(rect(), m_source.theme().fieldPressed); }

void Notice::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    fitSentence();
}

void Notice::fitSentence()
{
    m_row->activate();
    m_label->setText(m_label->fontMetrics().elidedText(m_sentence, Qt::ElideMiddle, m_label->width()));
}

}  // namespace quillet
