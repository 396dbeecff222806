#include "app/ui/KeyResponderView.h"

#include <QApplication>
#include <QKeyEvent>

namespace quillet {
namespace {

/// The space bar's place on the keyboard, as X11 and Wayland number it.
constexpr quint32 spaceScanCode = 65;

bool isSpace(const QKeyEvent& event)
{
    return event.nativeScanCode() != 0 ? event.nativeScanCode() == spaceScanCode : event.key() == Qt::Key_Space;
}

}  // namespace

KeyResponderView::KeyResponderView(AppState& state, QWidget* parent)
    : QWidget(parent),
      m_state(state)
{
    setAccessibleName(tr("Player"));
    setFocusPolicy(Qt::StrongFocus);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (now == nullptr)
            QMetaObject::invokeMethod(this, &KeyResponderView::takeFocusIfNobodyHasIt, Qt::QueuedConnection);
    });
}

void KeyResponderView::showEvent(QShowEvent* event)
{
    setFocus(Qt::OtherFocusReason);
    QWidget::showEvent(event);
}

void KeyResponderView::takeFocusIfNobodyHasIt()
{
    const QWidget* focused = window()->focusWidget();
    if (isVisible() && (focused == nullptr || focused == window()))
        setFocus(Qt::OtherFocusReason);
}

void KeyResponderView::keyPressEvent(QKeyEvent* event)
{
    if (!isSpace(*event) || (event->modifiers() & Qt::ControlModifier) != 0) {
        QWidget::keyPressEvent(event);
        return;
    }
    if (!event->isAutoRepeat() && m_state.loadingState().stage == LoadingState::Stage::loaded)
        m_state.togglePlayPause();
}

}  // namespace quillet
