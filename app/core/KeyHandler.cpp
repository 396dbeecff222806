#include "app/core/KeyHandler.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QWindow>

#include <array>
#include <utility>

namespace quillet {
namespace {

bool isEditingText()
{
    const QWidget* focused = QApplication::focusWidget();
    if (focused == nullptr || !focused->isEnabled())
        return false;
    if (const auto* line = qobject_cast<const QLineEdit*>(focused))
        return !line->isReadOnly();
    if (const auto* text = qobject_cast<const QTextEdit*>(focused))
        return !text->isReadOnly();
    if (const auto* text = qobject_cast<const QPlainTextEdit*>(focused))
        return !text->isReadOnly();
    const auto* spin = qobject_cast<const QAbstractSpinBox*>(focused);
    return spin != nullptr && !spin->isReadOnly();
}

/// In a menu, or in a dialog, whether or not the window behind it can be used.
bool isElsewhere()
{
    return QApplication::activeModalWidget() != nullptr || QApplication::activePopupWidget() != nullptr
        || qobject_cast<QDialog*>(QApplication::activeWindow()) != nullptr;
}

}  // namespace

KeyHandler::KeyHandler(Scheduler& scheduler)
    : m_scheduler(scheduler)
{
}

KeyHandler::~KeyHandler() { stop(); }

void KeyHandler::start(std::weak_ptr<AppState> state, PlaybackCommands& commands)
{
    stop();
    m_state = std::move(state);
    m_commands = &commands;
    qApp->installEventFilter(this);
    m_isInstalled = true;
}

void KeyHandler::stop()
{
    if (std::exchange(m_isInstalled, false) && qApp != nullptr)
        qApp->removeEventFilter(this);
}

bool KeyHandler::eventFilter(QObject* watched, QEvent* event)
{
    const bool asksForShortcut = event->type() == QEvent::ShortcutOverride;
    if (!asksForShortcut && event->type() != QEvent::KeyPress)
        return false;
    // A key reaches the window first and then the widgets, one by one: it is taken at its first stop, and so only once.
    const auto state = m_state.lock();
    const auto* key = static_cast<QKeyEvent*>(event);
    if (!state || state->loadingState().stage != LoadingState::Stage::loaded || isElsewhere())
        return QObject::eventFilter(watched, event);
    Action action = actionOf(*key, *state);
    if (!action)
        return false;
    event->accept();
    if (asksForShortcut) {
        // Accepted, the press comes as a press: no menu takes it, and no field keeps it.
        return true;
    }
    m_scheduler.post([weak = m_state, action = std::move(action)] {
        if (const auto current = weak.lock())
            action(*current);
    });
    return true;
}

/// By the place on the keyboard; by the key's name where an event carries no place.
KeyHandler::Key KeyHandler::keyOf(const QKeyEvent& event)
{
    struct Place {
        /// As X11 and Wayland number them.
        quint32 scanCode;
        int qtKey;
        Key key;
    };
    static constexpr std::array places{
        Place{ 43, Qt::Key_H, Key::h },        Place{ 46, Qt::Key_L, Key::l },          Place{ 27, Qt::Key_R, Key::r },
        Place{ 113, Qt::Key_Left, Key::left }, Place{ 114, Qt::Key_Right, Key::right }, Place{ 111, Qt::Key_Up, Key::up },
        Place{ 116, Qt::Key_Down, Key::down },
    };
    for (const Place& place : places)
        if (event.nativeScanCode() != 0 ? event.nativeScanCode() == place.scanCode : event.key() == place.qtKey)
            return place.key;
    return Key::none;
}

KeyHandler::Action KeyHandler::actionOf(const QKeyEvent& event, const AppState& state) const
{
    const Key key = keyOf(event);
    const auto modifiers = event.modifiers();
    const bool isPlain = (modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) == 0;
    if (!isPlain)
        return (modifiers & Qt::ControlModifier) != 0 ? shortcut(key) : Action();
    if (isEditingText())
        return {};
    if (key == Key::h)
        return [](AppState& current) { current.toggleHold(); };
    const bool steps = state.holdEnabled() && (modifiers & Qt::ShiftModifier) == 0;
    if (steps && key == Key::right)
        return [](AppState& current) { current.stepHoldForward(); };
    if (steps && key == Key::left)
        return [](AppState& current) { current.stepHoldBackward(); };
    return {};
}

KeyHandler::Action KeyHandler::shortcut(Key key) const
{
    PlaybackCommands* commands = m_commands;
    switch (key) {
    case Key::r:
        return [commands](AppState&) { commands->stopReset(); };
    case Key::l:
        return [commands](AppState&) { commands->toggleLoop(); };
    case Key::left:
        return [commands](AppState&) { commands->decreaseSpeed(); };
    case Key::right:
        return [commands](AppState&) { commands->increaseSpeed(); };
    case Key::up:
        return [commands](AppState&) { commands->pitchUp(); };
    case Key::down:
        return [commands](AppState&) { commands->pitchDown(); };
    case Key::h:
    case Key::none:
        return {};
    }
    return {};
}

}  // namespace quillet
