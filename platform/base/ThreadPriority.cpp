#include "platform/base/ThreadPriority.h"

#include "platform/base/RealtimeRequests.h"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace quillet {
namespace {

/// The last of those that the thread may use, if there are several.
void leaveAProcessorFree() noexcept
{
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) != 0 || CPU_COUNT(&allowed) < 2)
        return;
    int last = CPU_SETSIZE - 1;
    while (!CPU_ISSET(last, &allowed))
        --last;
    CPU_CLR(last, &allowed);
    [[maybe_unused]] const int refused = sched_setaffinity(0, sizeof allowed, &allowed);
}

}  // namespace

ThreadPriority raiseThreadPriority() noexcept
{
    sched_param parameters{};
    parameters.sched_priority = realtimePriority;
    if (pthread_setschedparam(pthread_self(), SCHED_RR | SCHED_RESET_ON_FORK, &parameters) == 0)
        return ThreadPriority::realtime;
    const bool isRaised = setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), raisedNiceLevel) == 0;
    realtimeRequests().add(gettid());
    return isRaised ? ThreadPriority::raised : ThreadPriority::unchanged;
}

void lowerThreadPriority() noexcept
{
    [[maybe_unused]] const int refused = setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), loweredNiceLevel);
    leaveAProcessorFree();
}

ThreadPriority currentThreadPriority() noexcept
{
    // Of this thread alone, as the system sees it: glibc's own idea does not know what others have granted.
    const int policy = sched_getscheduler(0) & ~SCHED_RESET_ON_FORK;
    if (policy == SCHED_RR || policy == SCHED_FIFO)
        return ThreadPriority::realtime;
    return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())) < 0 ? ThreadPriority::raised : ThreadPriority::unchanged;
}

}  // namespace quillet
