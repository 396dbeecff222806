// The threads of the program that were refused a real-time schedule, for the one who can ask the system for it on their behalf.
// It keeps a few of them; while nobody asks, further ones are forgotten. It does not know how asking is done, and tells the
// threads nothing: they see what they got in `currentThreadPriority`.
// Threads: `add` and `wake` anywhere, the device callback included: no allocation, no lock, no wait. `take` and `wait` on one
// thread.
#pragma once

#include "platform/base/WakeSemaphore.h"

#include <array>
#include <atomic>
#include <optional>

#include <sys/types.h>

namespace quillet {

class RealtimeRequests {
public:
    void add(pid_t thread) noexcept;
    /// A thread that has been added and not yet taken.
    [[nodiscard]] std::optional<pid_t> take() noexcept;

    /// Returns after the next `add` or `wake`, or after `timeoutSeconds`.
    void wait(double timeoutSeconds) { m_added.wait(timeoutSeconds); }
    void wake() noexcept { m_added.wake(); }

private:
    static_assert(std::atomic<pid_t>::is_always_lock_free);

    /// 0: free.
    std::array<std::atomic<pid_t>, 16> m_threads{};
    WakeSemaphore m_added;
};

/// The list of this process, which `raiseThreadPriority` writes.
[[nodiscard]] RealtimeRequests& realtimeRequests() noexcept;

}  // namespace quillet
