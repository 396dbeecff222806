#include "platform/base/ThreadPriority.h"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace quillet {
namespace {

/// Below what sound servers use for themselves.
constexpr int realtimePriority = 5;
constexpr int niceLevel = -11;

}  // namespace

ThreadPriority raiseThreadPriority() noexcept
{
    sched_param parameters{};
    parameters.sched_priority = realtimePriority;
    if (pthread_setschedparam(pthread_self(), SCHED_RR | SCHED_RESET_ON_FORK, &parameters) == 0)
        return ThreadPriority::realtime;
    if (setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), niceLevel) == 0)
        return ThreadPriority::raised;
    return ThreadPriority::unchanged;
}

}  // namespace quillet
