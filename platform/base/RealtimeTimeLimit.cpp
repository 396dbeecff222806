#include "platform/base/RealtimeTimeLimit.h"

#include <sched.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>

namespace quillet {
namespace {

static_assert(std::atomic<pid_t>::is_always_lock_free);
/// More than are ever alive at once. A thread that has ended is not found, or is one that the schedule does not matter to.
constinit std::array<std::atomic<pid_t>, 16> watched{};
constinit std::atomic<std::size_t> watchedCount{ 0 };

/// The signal goes to any thread of the program, not surely to the one that it is about.
void takeScheduleAway(int signal)
{
    const int savedError = errno;
    bool anyone = false;
    for (auto& place : watched) {
        const pid_t thread = place.exchange(0);
        if (thread == 0)
            continue;
        anyone = true;
        const sched_param none{};
        [[maybe_unused]] const int gone = sched_setscheduler(thread, SCHED_OTHER | SCHED_RESET_ON_FORK, &none);
    }
    // Not about the schedule, then: a limit on all of the program's computing, which ends it.
    if (!anyone) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
    errno = savedError;
}

}  // namespace

bool limitRealtimeRuns(std::int64_t microseconds)
{
    struct sigaction action{};
    action.sa_handler = takeScheduleAway;
    action.sa_flags = SA_RESTART;
    rlimit limit{};
    if (sigaction(SIGXCPU, &action, nullptr) != 0 || getrlimit(RLIMIT_RTTIME, &limit) != 0)
        return false;
    limit.rlim_max = std::min(limit.rlim_max, static_cast<rlim_t>(microseconds));
    // The signal comes at the lower limit, death at the upper one.
    limit.rlim_cur = std::min(limit.rlim_cur, limit.rlim_max / 4 * 3);
    return setrlimit(RLIMIT_RTTIME, &limit) == 0;
}

void watchRealtimeThread(pid_t thread) noexcept { watched[watchedCount.fetch_add(1) % watched.size()] = thread; }

}  // namespace quillet
