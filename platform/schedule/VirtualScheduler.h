// A scheduler whose time passes only when it is told to: it renders a file faster than real time, and it lets a program of
// seconds run in microseconds, always in the same order.
// Threads: `post` from every thread; anything else on the main thread.
#pragma once

#include "platform/schedule/DueQueue.h"
#include "platform/schedule/Scheduler.h"

#include <memory>
#include <mutex>
#include <vector>

namespace quillet {

class VirtualScheduler final : public Scheduler {
public:
    void post(Action action) override;

    // ---- Main thread ----

    [[nodiscard]] ScheduledTask after(double delaySeconds, Action action) override;
    [[nodiscard]] ScheduledTask every(double intervalSeconds, Action action) override;
    [[nodiscard]] ScheduledTask watch(int descriptor, Action action) override;
    /// Starts at 0.
    [[nodiscard]] double nowSeconds() const override;

    /// Lets `seconds` (at least 0) pass and runs everything that falls due on the way, each at its own time: what was posted,
    /// what is readable, then the tasks. What an action adds runs too if it falls due by the end. Not to be called from an
    /// action.
    void advance(double seconds);

    /// Runs the actions of the watched descriptors that can be read now; true if there was one.
    bool pollDescriptors();

private:
    struct Watch {
        int descriptor;
        Action action;
        bool cancelled = false;
    };

    bool runPosted();
    bool runDue(DueQueue::Nanoseconds limit);

    DueQueue m_queue;
    DueQueue::Nanoseconds m_now = 0;
    std::vector<std::weak_ptr<Watch>> m_watches;
    bool m_advancing = false;

    std::mutex m_postedMutex;
    std::vector<Action> m_posted;  // guarded by m_postedMutex
};

}  // namespace quillet
