// Time and the main thread: the only way the program defers, repeats or hops to the main thread. Actions run one after the
// other on the main thread, in the order in which they fall due, never inside the call that scheduled them.
#pragma once

#include "platform/schedule/ScheduledTask.h"

#include <functional>

namespace quillet {

class Scheduler {
public:
    using Action = std::function<void()>;

    virtual ~Scheduler() = default;

    /// Runs `action` on the main thread in a later turn of its loop. Callable from every thread. An action posted when the
    /// program ends may never run.
    virtual void post(Action action) = 0;

    // ---- Main thread ----

    /// Runs `action` once, `delaySeconds` (at least 0) from now.
    [[nodiscard]] virtual ScheduledTask after(double delaySeconds, Action action) = 0;

    /// Runs `action` every `intervalSeconds` (above 0); the first time one interval from now. Missed turns are not made up for.
    [[nodiscard]] virtual ScheduledTask every(double intervalSeconds, Action action) = 0;

    /// Runs `action` whenever `descriptor` has something to read; the action must read it. The descriptor stays the caller's.
    [[nodiscard]] virtual ScheduledTask watch(int descriptor, Action action) = 0;

    /// Seconds on a clock that never goes back; its zero means nothing.
    [[nodiscard]] virtual double nowSeconds() const = 0;
};

}  // namespace quillet
