// Keeps the machine awake and its screen on while something plays: asks the desktop's portal on the session bus, or where that
// does not do it the screen saver's service. Without either nothing changes and nothing is said.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QObject>

#include <variant>

namespace quillet {

class SleepInhibitor final : public QObject {
public:
    /// Follows the state, which outlives it. It never waits for an answer.
    SleepInhibitor(const AppState& state, const QDBusConnection& bus);
    ~SleepInhibitor() override = default;
    SleepInhibitor(const SleepInhibitor&) = delete;
    SleepInhibitor& operator=(const SleepInhibitor&) = delete;

private:
    /// What was given is given back by it: the portal's request, or the number from the screen saver's service.
    struct Asked { };
    using Held = std::variant<std::monostate, Asked, QDBusObjectPath, uint>;

    void follow();
    void askPortal();
    void askScreenSaver();
    void hold(const Held& held);
    void release();

    const AppState& m_state;
    QDBusConnection m_bus;
    Held m_held;
};

}  // namespace quillet
