// The keys that act wherever the focus is: H and the arrows of the hold mode, unless a text is being edited, and the shortcuts
// with the command key. It sees every key press of the application before any view does, by the keys' places on the keyboard,
// so that they are the same on every layout. What it takes is acted on a moment later.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/PlaybackCommands.h"
#include "platform/schedule/Scheduler.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>

class QKeyEvent;

namespace quillet {

class KeyHandler final : public QObject {
    Q_OBJECT

public:
    explicit KeyHandler(Scheduler& scheduler);
    ~KeyHandler() override;
    KeyHandler(const KeyHandler&) = delete;
    KeyHandler& operator=(const KeyHandler&) = delete;

    /// Begins to act on `state`, held weakly, by way of `commands`, which outlives it. Does so anew when it has been started
    /// before.
    void start(std::weak_ptr<AppState> state, PlaybackCommands& commands);
    void stop();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Key { none, h, l, r, left, right, up, down };
    using Action = std::function<void(AppState& state)>;

    [[nodiscard]] static Key keyOf(const QKeyEvent& event);
    [[nodiscard]] Action actionOf(const QKeyEvent& event, const AppState& state) const;
    [[nodiscard]] Action shortcut(Key key) const;

    Scheduler& m_scheduler;
    std::weak_ptr<AppState> m_state;
    PlaybackCommands* m_commands = nullptr;
    bool m_isInstalled = false;
};

}  // namespace quillet
