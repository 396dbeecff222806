#include "platform/base/WakeSemaphore.h"

#include "platform/base/Require.h"

#include <cmath>
#include <ctime>

namespace quillet {

WakeSemaphore::WakeSemaphore() { REQUIRE(sem_init(&m_semaphore, 0, 0) == 0); }

WakeSemaphore::~WakeSemaphore() { sem_destroy(&m_semaphore); }

void WakeSemaphore::wait(double timeoutSeconds)
{
    timespec until{};
    REQUIRE(clock_gettime(CLOCK_MONOTONIC, &until) == 0);
    const double whole = std::floor(timeoutSeconds);
    until.tv_sec += static_cast<time_t>(whole);
    until.tv_nsec += static_cast<long>((timeoutSeconds - whole) * 1e9);
    if (until.tv_nsec >= 1'000'000'000) {
        until.tv_nsec -= 1'000'000'000;
        ++until.tv_sec;
    }
    // An interruption by a signal counts as a wake: every worker looks at its state after one anyway.
    if (sem_clockwait(&m_semaphore, CLOCK_MONOTONIC, &until) == 0)
        while (sem_trywait(&m_semaphore) == 0) { }
}

}  // namespace quillet
