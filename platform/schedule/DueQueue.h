// The tasks of a scheduler, ordered by the time at which they fall due and, at the same time, by the order in which they were
// added. It knows no clock: whoever owns it says what time it is. Times are whole nanoseconds, so that sums of intervals
// stay exact.
// Threads: main thread.
#pragma once

#include "platform/schedule/Scheduler.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>

namespace quillet {

class DueQueue {
public:
    using Nanoseconds = std::int64_t;

    static constexpr Nanoseconds once = 0;

    /// The time at which a task falls due, and the order in which it was added.
    using Place = std::pair<Nanoseconds, std::uint64_t>;

    struct Task {
        Nanoseconds interval = once;
        Scheduler::Action action;
        Place place;
        bool cancelled = false;

        /// Runs the action, unless the task was cancelled after it was taken.
        void run() const
        {
            if (!cancelled)
                action();
        }
    };

    /// Rounded to the nearest nanosecond; `seconds` lies within ±292 years (REQUIRE).
    static Nanoseconds nanoseconds(double seconds);

    /// Runs `action` at `due`, then every `interval` (`once`: never again). A repeating task that could not run in time leaves
    /// out the turns that it missed.
    [[nodiscard]] ScheduledTask add(Nanoseconds due, Nanoseconds interval, Scheduler::Action action);

    /// When the earliest task falls due; nothing when there is none.
    [[nodiscard]] std::optional<Nanoseconds> nextDue();

    /// Takes the earliest task out if it is due at `now`. The caller runs it, then puts it back with `finish`.
    [[nodiscard]] std::shared_ptr<Task> take(Nanoseconds now);

    /// Puts a repeating task that has run back for its next turn after `now`; lets any other go.
    void finish(std::shared_ptr<Task> task, Nanoseconds now);

private:
    using Tasks = std::map<Place, std::shared_ptr<Task>>;

    void insert(std::shared_ptr<Task> task);

    // Shared with the handles, which take their task out and may outlive the queue.
    std::shared_ptr<Tasks> m_tasks = std::make_shared<Tasks>();
    std::uint64_t m_added = 0;
};

}  // namespace quillet
