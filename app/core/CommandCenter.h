// Where every command ends, whoever gives it: a menu, the toolbar, a key. It posts the command's notification, and carries out
// what concerns the playing of the open song; what concerns the window the window carries out.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/Commands.h"
#include "app/core/Notifications.h"

#include <optional>
#include <vector>

namespace quillet {

class CommandCenter {
public:
    /// Both outlive it.
    CommandCenter(AppState& state, Notifications& notifications);
    ~CommandCenter() = default;
    CommandCenter(const CommandCenter&) = delete;
    CommandCenter& operator=(const CommandCenter&) = delete;

    /// Commands that concern a song do nothing while none is loaded.
    void execute(CommandId id, const std::optional<FilePath>& object = std::nullopt);

    /// `handler` carries out the command, until the subscription ends.
    [[nodiscard]] Notifications::Subscription onCommand(CommandId id, Notifications::Handler handler);

private:
    AppState& m_state;
    Notifications& m_notifications;
    std::vector<Notifications::Subscription> m_subscriptions;
};

}  // namespace quillet
