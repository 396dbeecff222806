// The scheduler of the running program, on the event loop of the thread that creates it. It keeps the time with one precise
// timer for all tasks; it does not run the loop.
// Threads: `post` from every thread; anything else, and construction and destruction, on the main thread. Whoever posts from
// another thread ends before the scheduler does.
#pragma once

#include "platform/schedule/Scheduler.h"

#include <memory>

namespace quillet {

class QtScheduler final : public Scheduler {
public:
    /// The QCoreApplication exists already.
    QtScheduler();
    ~QtScheduler() override;

    void post(Action action) override;

    // ---- Main thread ----

    [[nodiscard]] ScheduledTask after(double delaySeconds, Action action) override;
    [[nodiscard]] ScheduledTask every(double intervalSeconds, Action action) override;
    [[nodiscard]] ScheduledTask watch(int descriptor, Action action) override;
    [[nodiscard]] double nowSeconds() const override;

private:
    class Loop;

    std::unique_ptr<Loop> m_loop;
};

}  // namespace quillet
