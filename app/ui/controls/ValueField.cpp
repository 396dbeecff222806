#include "app/ui/controls/ValueField.h"

#include "app/ui/AppTheme.h"
#include "app/ui/controls/Fonts.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QLocale>

#include <utility>

namespace quillet {
namespace {

/// More than any value needs.
constexpr int maxTextLength = 32;

}  // namespace

ValueField::ValueField(const QString& name, int width, QWidget* parent)
    : QLineEdit(parent)
{
    setAccessibleName(name);
    setFixedSize(scaled(width), scaled(AppTheme::controlHeight));
    setAlignment(Qt::AlignCenter);
    setFont(numberFont(AppTheme::controlPixels));
    setMaxLength(maxTextLength);
    setFrame(true);
    // What a menu of cut and paste could do the keys can as well; the menu would end the editing.
    setContextMenuPolicy(Qt::NoContextMenu);
    // What is dropped is for the window.
    setAcceptDrops(false);
}

void ValueField::showValue(const QString& text)
{
    m_valueText = text;
    setPlaceholderText(text);
    if (!m_isEditing)
        setText(text);
}

void ValueField::focusInEvent(QFocusEvent* event)
{
    if (!std::exchange(m_isEditing, true))
        clear();
    QLineEdit::focusInEvent(event);
}

void ValueField::focusOutEvent(QFocusEvent* event)
{
    finish(true);
    QLineEdit::focusOutEvent(event);
}

/// Ends the editing; the value shown is that of the owner afterwards.
void ValueField::finish(bool commit)
{
    if (!std::exchange(m_isEditing, false))
        return;
    QString typed = text();
    // Numbers are read with a point.
    if (const QString comma = locale().decimalPoint(); comma == QLatin1String(","))
        typed.replace(comma, QLatin1String("."));
    if (commit && m_commit)
        m_commit(typed);
    setText(m_valueText);
}

void ValueField::keyPressEvent(QKeyEvent* event)
{
    const bool isPlain = (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) == 0;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        finish(true);
        clearFocus();
        break;
    case Qt::Key_Escape:
        finish(false);
        clearFocus();
        break;
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (isPlain && m_step)
            m_step(event->key() == Qt::Key_Up ? 1 : -1);
        else
            QLineEdit::keyPressEvent(event);
        break;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

}  // namespace quillet
