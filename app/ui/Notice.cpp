#include "app/ui/Notice.h"

#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>

namespace quillet {
namespace {

constexpr int padding = 8;
constexpr int barWidth = 160;

}  // namespace

Notice::Notice(const ThemeSource& source, const QString& sentence, QWidget* parent)
    : QWidget(parent),
      m_source(source),
      m_label(new Label(source, Label::Role::text, {})),
      m_row(new QHBoxLayout(this))
{
    m_label->setAlignment(Qt::AlignCenter);
    m_label->setWordWrap(true);
    QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    m_label->setSizePolicy(policy);
    m_row->setContentsMargins(AppTheme::windowMargin, padding, AppTheme::windowMargin, padding);
    m_row->setSpacing(padding);
    m_row->addWidget(m_label, 1);
    setSentence(sentence);
}

void Notice::setSentence(const QString& sentence)
{
    setAccessibleName(sentence);
    // A path may be broken between its folders.
    m_label->setText(QString(sentence).replace(QLatin1Char('/'), QStringLiteral("/\u200B")));
}

void Notice::setProgress(std::optional<int> percent)
{
    if (m_bar == nullptr && !percent)
        return;
    if (m_bar == nullptr) {
        m_bar = new QProgressBar;
        m_bar->setAccessibleName(tr("Progress"));
        m_bar->setTextVisible(false);
        m_bar->setFixedWidth(scaled(barWidth));
        m_row->insertWidget(1, m_bar);
    }
    m_bar->setVisible(percent.has_value());
    m_bar->setValue(percent.value_or(0));
}

QPushButton& Notice::addButton(const QString& title)
{
    auto* button = new QPushButton(title);
    button->setFocusPolicy(Qt::TabFocus);
    m_row->addWidget(button);
    return *button;
}

void Notice::paintEvent(QPaintEvent*) { QPainter(this).fillRect(rect(), m_source.theme().fieldPressed); }

}  // namespace quillet
