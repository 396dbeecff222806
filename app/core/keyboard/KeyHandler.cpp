#include "app/core/keyboard/KeyHandler.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace quillet {
namespace {

enum class Place {
    window,
    /// A dialog in which nothing can be typed, whether or not the window under it can be used: only the command keys are not
    /// its own.
    sheet,
    /// A menu, or a dialog to type in.
    elsewhere,
};

Place presentPlace()
{
    if (QApplication::activePopupWidget() != nullptr)
        return Place::elsewhere;
    const QWidget* dialog = QApplication::activeModalWidget();
    if (dialog == nullptr)
        dialog = qobject_cast<QDialog*>(QApplication::activeWindow());
    if (dialog == nullptr)
        return Place::window;
    return std::ranges::any_of(dialog->findChildren<QWidget*>(), isTextEditor) ? Place::elsewhere : Place::sheet;
}

}  // namespace

KeyHandler::KeyHandler(Scheduler& scheduler, const KeyMap& keys)
    : m_scheduler(scheduler),
      m_keys(keys)
{
}

KeyHandler::~KeyHandler() { stop(); }

void KeyHandler::start(std::weak_ptr<AppState> state, CommandCenter& center)
{
    stop();
    m_state = std::move(state);
    m_center = &center;
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
    const Place place = presentPlace();
    if (!state || place == Place::elsewhere || m_keys.isChoosing())
        return QObject::eventFilter(watched, event);
    const auto command = commandFor(*key, *state);
    const bool hasCommandKey = (key->modifiers() & Qt::ControlModifier) != 0;
    if (!command || (place == Place::sheet && !hasCommandKey))
        return false;
    event->accept();
    if (asksForShortcut) {
        // Accepted, the press comes as a press: no menu takes it, and no field keeps it.
        return true;
    }
    if (!key->isAutoRepeat() || !commandOf(*command).actsOnce)
        perform(*command);
    return true;
}

/// Once the handler has returned, if the state still exists.
void KeyHandler::perform(CommandId command)
{
    m_scheduler.post([weak = m_state, center = m_center, command] {
        if (const auto current = weak.lock())
            center->execute(command);
    });
}

/// By the user's own keys: these are exact, and go before the usual ones.
std::optional<CommandId> KeyHandler::chosenFor(const QKeyEvent& event, const AppState& state) const
{
    const int modifiers = static_cast<int>(event.modifiers()) & KeyChord::modifierMask;
    for (const Command& command : commands) {
        const auto chord = m_keys.chosen(command.id);
        if (!chord || chord->modifiers != modifiers || !isAt(chord->key, event))
            continue;
        const bool isTyped = !chord->actsInTexts() && isTextEditor(QApplication::focusWidget());
        if (!isTyped && (command.use != KeyUse::plainWhileHeld || state.holdEnabled()))
            return command.id;
    }
    return std::nullopt;
}

std::optional<CommandId> KeyHandler::commandFor(const QKeyEvent& event, const AppState& state) const
{
    // Without a song too: a file can be opened by a key of one's own.
    if (const auto chosen = chosenFor(event, state))
        return chosen;
    if (!state.isLoaded())
        return std::nullopt;
    const auto modifiers = event.modifiers();
    const bool isPlain = (modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) == 0;
    const bool isTyped = isTextEditor(QApplication::focusWidget());
    const bool acts = isPlain && !isTyped;
    const bool isWithAlt = (modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) == Qt::AltModifier;
    const auto applies = [&](KeyUse use) {
        switch (use) {
        case KeyUse::withCommandKey:
            return (modifiers & Qt::ControlModifier) != 0;
        case KeyUse::withCommandKeyAndAlt:
            return (modifiers & Qt::ControlModifier) != 0 && (modifiers & Qt::AltModifier) != 0;
        case KeyUse::withCommandKeyWithoutAlt:
            return (modifiers & Qt::ControlModifier) != 0 && (modifiers & Qt::AltModifier) == 0;
        case KeyUse::plain:
            return acts;
        case KeyUse::plainWithShift:
            return acts && (modifiers & Qt::ShiftModifier) != 0;
        case KeyUse::plainWithoutShift:
            return acts && (modifiers & Qt::ShiftModifier) == 0;
        case KeyUse::plainWithAlt:
            return isWithAlt && !isTyped;
        case KeyUse::plainWhileHeld:
            return acts && state.holdEnabled() && (modifiers & Qt::ShiftModifier) == 0;
        case KeyUse::never:
        case KeyUse::inPlayer:
            break;
        }
        return false;
    };
    for (const Command& command : commands)
        if (isAt(command.key, event) && applies(command.use) && !m_keys.chosen(command.id))
            return command.id;
    return std::nullopt;
}

bool isAt(const PhysicalKey& key, const QKeyEvent& event)
{
    if (key.scanCode == 0)
        return key.key != Qt::Key_unknown && event.key() == key.key;
    // What every layout calls the same; a keyboard on the screen has places of its own.
    const bool hasOneName = key.key == Qt::Key_Space || key.key >= Qt::Key_Escape;
    return event.nativeScanCode() == key.scanCode || ((hasOneName || event.nativeScanCode() == 0) && event.key() == key.key);
}

bool isTextEditor(const QObject* widget)
{
    const auto* seen = qobject_cast<const QWidget*>(widget);
    if (seen == nullptr || !seen->isEnabled())
        return false;
    if (const auto* line = qobject_cast<const QLineEdit*>(seen))
        return !line->isReadOnly();
    if (const auto* text = qobject_cast<const QTextEdit*>(seen))
        return !text->isReadOnly();
    if (const auto* text = qobject_cast<const QPlainTextEdit*>(seen))
        return !text->isReadOnly();
    const auto* spin = qobject_cast<const QAbstractSpinBox*>(seen);
    return spin != nullptr && !spin->isReadOnly();
}

}  // namespace quillet
