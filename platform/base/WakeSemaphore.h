// Wakes a worker thread from any thread, the device callback included: `wake` neither locks nor allocates nor waits. Wakes
// that come while the worker is busy are remembered as one or more, never lost. Timeouts follow the time that passes: setting
// the system's clock neither prolongs nor shortens them.
// Threads: `wake` anywhere; `wait` on the worker.
#pragma once

#include <semaphore.h>

namespace quillet {

class WakeSemaphore {
public:
    WakeSemaphore();
    ~WakeSemaphore();
    WakeSemaphore(const WakeSemaphore&) = delete;
    WakeSemaphore& operator=(const WakeSemaphore&) = delete;

    void wake() noexcept { sem_post(&m_semaphore); }

    /// Returns after the next wake, or after `timeoutSeconds` (0 or more) at the latest; several pending wakes count as one.
    void wait(double timeoutSeconds);

private:
    sem_t m_semaphore;
};

}  // namespace quillet
