// Proves that the real-time guard bites: one function of each kind that it stands in front of, inside and outside a scope.

#include "tests/support/RealtimeGuard.h"

#include "platform/base/RealtimeScope.h"

#include <gmock/gmock.h>

#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <mutex>
#include <thread>

#include <poll.h>
#include <semaphore.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace quillet {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::StartsWith;

/// Hides a block from the optimiser, which may leave out an allocation that nothing uses.
void* volatile sink = nullptr;

void allocateAndFree()
{
    sink = std::malloc(16);
    std::free(sink);
}

TEST(RealtimeGuard, BitesOnEachKindOfFunctionInsideAScopeOnly)
{
    std::mutex mutex;
    struct Case {
        const char* function;
        std::function<void()> call;
    };
    const Case cases[] = {
        { "malloc", allocateAndFree },
        { "free", allocateAndFree },
        { "pthread_mutex_lock", [&] { const std::scoped_lock lock(mutex); } },
        { "poll", [] { poll(nullptr, 0, 0); } },
        { "usleep", [] { usleep(1); } },
        // By another name on some systems: fopen64.
        { "fopen", [] { std::ifstream("/dev/null"); } },
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.function);
        each.call();
        EXPECT_THAT(takeRealtimeViolations(), IsEmpty()) << "outside a scope";
        {
            const RealtimeScope scope;
            each.call();
        }
        EXPECT_THAT(takeRealtimeViolations(), Contains(StartsWith(each.function)));
    }
}

TEST(RealtimeGuard, LetsWakingLockFreeWorkAndOtherThreadsPass)
{
    sem_t semaphore;
    ASSERT_EQ(sem_init(&semaphore, 0, 0), 0);
    const int event = eventfd(0, EFD_NONBLOCK);
    std::atomic<int> turn{ 0 };
    std::condition_variable waiters;
    std::thread other([&turn] {
        while (turn != 1) { }
        allocateAndFree();
        turn = 2;
    });
    {
        const RealtimeScope scope;
        const std::uint64_t one = 1;
        EXPECT_EQ(sem_post(&semaphore), 0);
        EXPECT_EQ(write(event, &one, sizeof one), static_cast<ssize_t>(sizeof one));
        turn = 1;
        turn.notify_one();
        waiters.notify_one();
        while (turn != 2) { }
    }
    other.join();
    close(event);
    sem_destroy(&semaphore);
    EXPECT_THAT(takeRealtimeViolations(), IsEmpty());
}

TEST(RealtimeGuardDeathTest, TheCaseWithTheViolationFails)
{
    if (std::getenv("QUILLET_PROVOKE_VIOLATION") != nullptr) {
        const RealtimeScope scope;
        allocateAndFree();
        return;
    }
    EXPECT_EXIT(
        {
            setenv("QUILLET_PROVOKE_VIOLATION", "1", 1);
            execl("/proc/self/exe", "again", "--gtest_filter=*TheCaseWithTheViolationFails", nullptr);
        },
        testing::ExitedWithCode(1), "real-time violation: malloc(.|\n)*real-time violation: free");
}

}  // namespace
}  // namespace quillet
