#include "app/ui/controls/ElidedLabel.h"

#include <QEvent>
#include <QTextDocument>

namespace quillet {

ElidedLabel::ElidedLabel(const ThemeSource& source, Role role, QWidget* parent)
    : Label(source, role, {}, parent)
{
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void ElidedLabel::setWholeText(const QString& text, const QString& name)
{
    m_wholeText = text;
    setAccessibleName(name.isEmpty() ? text : name);
    // A name with "<b>" in it is shown as it is.
    setToolTip(Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text);
    fit();
}

void ElidedLabel::resizeEvent(QResizeEvent* event)
{
    Label::resizeEvent(event);
    fit();
}

void ElidedLabel::changeEvent(QEvent* event)
{
    Label::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        fit();
}

void ElidedLabel::fit() { setText(fontMetrics().elidedText(m_wholeText, Qt::ElideMiddle, contentsRect().width())); }

}  // namespace quillet
