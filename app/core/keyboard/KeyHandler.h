// The keys that act wherever the focus is: H and the arrows of the hold mode, unless a text is being edited, and the shortcuts
// with the command key. It sees every key press of the application before any view does, by the keys' places on the keyboard,
// so that they are the same on every layout. What it takes is acted on a moment later. Which key does what stands in the table
// of the commands and in the map of the user's own.
// Threads: main thread.
#pragma once

#include "app/core/CommandCenter.h"
#include "app/core/KeyMap.h"
#include "platform/schedule/Scheduler.h"

#include <QObject>

#include <memory>
#include <optional>

class QKeyEvent;

namespace quillet {

class KeyHandler final : public QObject {
    Q_OBJECT

public:
    /// Both outlive the handler.
    KeyHandler(Scheduler& scheduler, const KeyMap& keys);
    ~KeyHandler() override;
    KeyHandler(const KeyHandler&) = delete;
    KeyHandler& operator=(const KeyHandler&) = delete;

    /// Begins to act while `state`, held weakly, has a song (the user's own keys always), by way of `center`, which outlives
    /// it. Started once more it begins again.
    void start(std::weak_ptr<AppState> state, CommandCenter& center);
    void stop();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void perform(CommandId command);
    [[nodiscard]] std::optional<CommandId> commandFor(const QKeyEvent& event, const AppState& state) const;
    [[nodiscard]] std::optional<CommandId> chosenFor(const QKeyEvent& event, const AppState& state) const;

    Scheduler& m_scheduler;
    const KeyMap& m_keys;
    /// An installed filter holds the state weakly.
    std::weak_ptr<AppState> m_state;
    CommandCenter* m_center = nullptr;
    bool m_isInstalled = false;
};

/// Whether the event is of the key at that place.
[[nodiscard]] bool isAt(const PhysicalKey& key, const QKeyEvent& event);

/// A widget that takes what is typed: a field that can be edited.
[[nodiscard]] bool isTextEditor(const QObject* widget);

}  // namespace quillet
