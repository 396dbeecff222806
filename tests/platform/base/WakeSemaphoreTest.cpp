#include "platform/base/WakeSemaphore.h"

#include <gtest/gtest.h>

#include <chrono>

namespace quillet {
namespace {

double secondsToWait(WakeSemaphore& semaphore, double timeoutSeconds)
{
    const auto begin = std::chrono::steady_clock::now();
    semaphore.wait(timeoutSeconds);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// A deadline on another clock than that of the wait would be over at once, or hours away.
TEST(WakeSemaphoreTest, TimeoutIsWaitedForUnlessThereWasAWake)
{
    WakeSemaphore semaphore;
    EXPECT_GE(secondsToWait(semaphore, 0.02), 0.02);
    semaphore.wake();
    semaphore.wake();
    semaphore.wait(1e6);
    EXPECT_GE(secondsToWait(semaphore, 0.02), 0.02) << "several wakes count as one";
}

}  // namespace
}  // namespace quillet
