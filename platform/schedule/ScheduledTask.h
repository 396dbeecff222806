// The handle of something scheduled: a deferred action, a repeating timer, a watched descriptor. Whoever holds it decides how
// long it lives: destroying or cancelling it guarantees that the action does not run any more.
// Threads: main thread.
#pragma once

#include <functional>
#include <utility>

namespace quillet {

class ScheduledTask {
public:
    ScheduledTask() = default;
    explicit ScheduledTask(std::function<void()> cancelAction)
        : m_cancel(std::move(cancelAction))
    {
    }
    ScheduledTask(ScheduledTask&& other) noexcept
        : m_cancel(std::exchange(other.m_cancel, nullptr))
    {
    }
    ScheduledTask& operator=(ScheduledTask&& other) noexcept
    {
        if (this != &other) {
            cancel();
            m_cancel = std::exchange(other.m_cancel, nullptr);
        }
        return *this;
    }
    ScheduledTask(const ScheduledTask&) = delete;
    ScheduledTask& operator=(const ScheduledTask&) = delete;
    ~ScheduledTask() { cancel(); }

    /// Ends the task; harmless when it already ran or was cancelled. May be called from within the action itself.
    void cancel()
    {
        if (auto action = std::exchange(m_cancel, nullptr))
            action();
    }

private:
    std::function<void()> m_cancel;
};

}  // namespace quillet
