#include "app/core/keyboard/KeyResponderView.h"

#include "app/core/keyboard/KeyHandler.h"

#include <QApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMenuBar>

#include <utility>

namespace quillet {

KeyResponderView::KeyResponderView(AppState& state, CommandCenter& center, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_center(center),
      m_stage(state.loadingState().stage)
{
    setAccessibleName(tr("Player"));
    setFocusPolicy(Qt::StrongFocus);
    qApp->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (now == nullptr)
            QMetaObject::invokeMethod(this, &KeyResponderView::takeFocusIfNobodyHasIt, Qt::QueuedConnection);
    });
    // A song that is opened is there to be played, whichever way it came.
    connect(&state, &AppState::loadingStateChanged, this, &KeyResponderView::followLoading);
}

void KeyResponderView::followLoading()
{
    const auto stage = m_state.loadingState().stage;
    if (std::exchange(m_stage, stage) != stage)
        takeFocus();
}

void KeyResponderView::takeFocus() { setFocus(Qt::OtherFocusReason); }

void KeyResponderView::showEvent(QShowEvent* event)
{
    takeFocus();
    QWidget::showEvent(event);
}

void KeyResponderView::takeFocusIfNobodyHasIt()
{
    const QWidget* focused = window()->focusWidget();
    if (isVisible() && (focused == nullptr || focused == window()))
        takeFocus();
}

// ---- The space bar ----

bool KeyResponderView::takeSpace(const QKeyEvent& event)
{
    if (!isAt(commandOf(CommandId::playPause).key, event) || (event.modifiers() & Qt::ControlModifier) != 0)
        return false;
    if (!event.isAutoRepeat())
        m_center.execute(CommandId::playPause);
    return true;
}

void KeyResponderView::keyPressEvent(QKeyEvent* event)
{
    if (!takeSpace(*event))
        QWidget::keyPressEvent(event);
}

// ---- The focus ----

bool KeyResponderView::eventFilter(QObject* watched, QEvent* event)
{
    auto* widget = qobject_cast<QWidget*>(watched);
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease)
        noteKey(watched, *static_cast<const QKeyEvent*>(event));
    if (widget == nullptr || widget->window() != window())
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        // Before what is clicked acts, what was typed is committed.
        m_isTabbing = false;
        if (!isTextEditor(widget))
            takeFocus();
        m_state.beginGesture();
        break;
    case QEvent::MouseButtonRelease:
        m_state.endGesture();
        break;
    case QEvent::FocusIn: {
        const auto reason = static_cast<const QFocusEvent*>(event)->reason();
        // The menus give the focus back to whoever had it.
        if (reason == Qt::MenuBarFocusReason && qobject_cast<QMenuBar*>(widget) != nullptr)
            break;
        if (mayHaveFocus(*widget, reason)) {
            m_chosen = widget;
        } else {
            takeFocus();
            // It no longer has the focus that the event tells it of.
            return true;
        }
        break;
    }
    default:
        break;
    }
    return false;
}

void KeyResponderView::noteKey(const QObject* watched, const QKeyEvent& event)
{
    // A release may have gone elsewhere.
    if (QApplication::mouseButtons() == Qt::NoButton)
        m_state.endGesture();
    const bool isTab = event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab;
    m_isTabbing = isTab && event.type() == QEvent::KeyPress;
    if (m_isTabbing)
        QMetaObject::invokeMethod(this, [this] { m_isTabbing = false; }, Qt::QueuedConnection);
    // A field that is edited forgets what was typed first, and lets go by itself.
    const auto* widget = qobject_cast<const QWidget*>(watched);
    const bool isOurs = widget != nullptr && widget->window() == window() && widget->hasFocus();
    if (isOurs && event.type() == QEvent::KeyPress && event.key() == Qt::Key_Escape && !isTextEditor(widget))
        takeFocus();
}

/// A widget that is hidden or disabled hands the focus on to its neighbour, as if by Tab: nobody chose that one.
bool KeyResponderView::mayHaveFocus(const QWidget& widget, Qt::FocusReason reason) const
{
    if (&widget == this)
        return true;
    switch (reason) {
    case Qt::TabFocusReason:
    case Qt::BacktabFocusReason:
        return m_isTabbing;
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
    case Qt::MenuBarFocusReason:
        return m_chosen == &widget;
    case Qt::MouseFocusReason:
        return isTextEditor(&widget);
    default:
        return true;
    }
}

}  // namespace quillet
