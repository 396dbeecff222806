// Proves that the real-time guard bites: every function that it stands in front of is called inside and outside a scope.

#include "tests/support/RealtimeGuard.h"

#include "platform/base/RealtimeScope.h"

#include <gmock/gmock.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <mutex>
#include <shared_mutex>
#include <thread>

#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <semaphore.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quillet {
namespace {

using testing::Contains;
using testing::IsEmpty;

/// Hides a block from the optimiser, which may leave out an allocation that nothing uses.
void* volatile sink = nullptr;

template <typename T> T* used(T* block)
{
    sink = block;
    return static_cast<T*>(sink);
}

void freeUsed(void* block) { std::free(used(block)); }

struct Case {
    const char* function;
    std::function<void()> call;
};

pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
pthread_rwlock_t readWriteLock = PTHREAD_RWLOCK_INITIALIZER;
pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
const timespec past{ 0, 1 };

/// Calls a wait on `condition` that has timed out before it begins, with the mutex held as it must be.
void timedOutWait(int (*wait)())
{
    pthread_mutex_lock(&mutex);
    EXPECT_EQ(wait(), ETIMEDOUT);
    pthread_mutex_unlock(&mutex);
}

/// pthread_cond_wait itself, ended by another thread.
void notifiedWait()
{
    bool ready = false;
    pthread_mutex_lock(&mutex);
    std::thread other([&] {
        pthread_mutex_lock(&mutex);
        ready = true;
        pthread_cond_signal(&condition);
        pthread_mutex_unlock(&mutex);
    });
    while (!ready)
        pthread_cond_wait(&condition, &mutex);
    pthread_mutex_unlock(&mutex);
    other.join();
}

class WithSemaphore {
public:
    WithSemaphore() { sem_init(&m_semaphore, 0, 1); }
    ~WithSemaphore() { sem_destroy(&m_semaphore); }
    WithSemaphore(const WithSemaphore&) = delete;
    WithSemaphore& operator=(const WithSemaphore&) = delete;
    sem_t* get() { return &m_semaphore; }

private:
    sem_t m_semaphore{};
};

void transferFile(const char* mode, const std::function<void(FILE*)>& transfer)
{
    FILE* file = std::fopen("/dev/null", mode);
    ASSERT_NE(file, nullptr);
    transfer(file);
    std::fclose(file);
}

void transferDescriptor(const std::function<void(int)>& transfer)
{
    const int file = open("/dev/zero", O_RDWR);
    ASSERT_GE(file, 0);
    transfer(file);
    close(file);
}

const std::vector<Case>& memoryCases()
{
    static const std::vector<Case> cases = {
        { "malloc", [] { freeUsed(std::malloc(64)); } },
        { "malloc", [] { delete used(new int(1)); } },
        { "free", [] { delete[] used(new int[7]); } },
        { "malloc", [] { freeUsed(strdup("text")); } },
        { "calloc", [] { freeUsed(std::calloc(8, 8)); } },
        { "realloc", [] { freeUsed(std::realloc(used(std::malloc(8)), 4096)); } },
        { "free", [] { freeUsed(std::malloc(64)); } },
        { "memalign", [] { freeUsed(memalign(64, 64)); } },
        { "aligned_alloc", [] { freeUsed(std::aligned_alloc(64, 64)); } },
        { "posix_memalign",
          [] {
              void* block = nullptr;
              EXPECT_EQ(posix_memalign(&block, 64, 64), 0);
              EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0U);
              EXPECT_EQ(posix_memalign(&block, 3, 64), EINVAL);
              freeUsed(block);
          } },
        { "mmap", [] { munmap(mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0), 4096); } },
        { "munmap", [] { munmap(mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0), 4096); } },
    };
    return cases;
}

const std::vector<Case>& lockCases()
{
    static const std::vector<Case> cases = {
        { "pthread_mutex_lock",
          [] {
              std::mutex own;
              std::scoped_lock lock(own);
          } },
        { "pthread_mutex_trylock", [] { EXPECT_TRUE(std::mutex().try_lock()); } },
        { "pthread_mutex_timedlock",
          [] {
              EXPECT_EQ(pthread_mutex_timedlock(&mutex, &past), 0);
              pthread_mutex_unlock(&mutex);
          } },
        { "pthread_mutex_clocklock",
          [] {
              EXPECT_EQ(pthread_mutex_clocklock(&mutex, CLOCK_MONOTONIC, &past), 0);
              pthread_mutex_unlock(&mutex);
          } },
        { "pthread_rwlock_rdlock",
          [] {
              std::shared_mutex shared;
              std::shared_lock lock(shared);
          } },
        { "pthread_rwlock_wrlock",
          [] {
              std::shared_mutex shared;
              std::scoped_lock lock(shared);
          } },
        { "pthread_rwlock_tryrdlock",
          [] {
              EXPECT_EQ(pthread_rwlock_tryrdlock(&readWriteLock), 0);
              pthread_rwlock_unlock(&readWriteLock);
          } },
        { "pthread_rwlock_trywrlock",
          [] {
              EXPECT_EQ(pthread_rwlock_trywrlock(&readWriteLock), 0);
              pthread_rwlock_unlock(&readWriteLock);
          } },
        { "pthread_spin_lock",
          [] {
              pthread_spinlock_t lock{};
              pthread_spin_init(&lock, PTHREAD_PROCESS_PRIVATE);
              pthread_spin_lock(&lock);
              pthread_spin_unlock(&lock);
          } },
    };
    return cases;
}

const std::vector<Case>& waitCases()
{
    static const std::vector<Case> cases = {
        { "pthread_cond_wait", notifiedWait },
        { "pthread_cond_timedwait", [] { timedOutWait([] { return pthread_cond_timedwait(&condition, &mutex, &past); }); } },
        { "pthread_cond_clockwait",
          [] { timedOutWait([] { return pthread_cond_clockwait(&condition, &mutex, CLOCK_MONOTONIC, &past); }); } },
        { "pthread_join", [] { std::thread([] { }).join(); } },
        { "sem_wait", [] { EXPECT_EQ(sem_wait(WithSemaphore().get()), 0); } },
        { "sem_timedwait", [] { EXPECT_EQ(sem_timedwait(WithSemaphore().get(), &past), 0); } },
        { "sem_clockwait", [] { EXPECT_EQ(sem_clockwait(WithSemaphore().get(), CLOCK_MONOTONIC, &past), 0); } },
        { "futex wait",
          [] {
              std::uint32_t word = 1;  // not the value waited for, so that the call returns at once
              EXPECT_EQ(syscall(SYS_futex, &word, 128, 0, nullptr, nullptr, 0), -1);
          } },
        { "sched_yield", [] { std::this_thread::yield(); } },
        { "nanosleep",
          [] {
              const timespec shortest{ 0, 1 };
              EXPECT_EQ(nanosleep(&shortest, nullptr), 0);
          } },
        { "clock_nanosleep", [] { EXPECT_EQ(clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &past, nullptr), 0); } },
        { "usleep", [] { EXPECT_EQ(usleep(1), 0); } },
        { "sleep", [] { EXPECT_EQ(sleep(0), 0U); } },
        { "poll", [] { EXPECT_EQ(poll(nullptr, 0, 0), 0); } },
        { "ppoll", [] { EXPECT_EQ(ppoll(nullptr, 0, &past, nullptr), 0); } },
        { "select",
          [] {
              timeval none{};
              EXPECT_EQ(select(0, nullptr, nullptr, nullptr, &none), 0);
          } },
        { "epoll_wait",
          [] {
              const int poller = epoll_create1(0);
              epoll_event event{};
              EXPECT_EQ(epoll_wait(poller, &event, 1, 0), 0);
              close(poller);
          } },
    };
    return cases;
}

const std::vector<Case>& fileCases()
{
    static char byte = 0;
    static const std::vector<Case> cases = {
        { "open", [] { close(open("/dev/null", O_RDONLY)); } },
        { "open64", [] { close(open64("/dev/null", O_RDONLY)); } },
        { "openat", [] { close(openat(AT_FDCWD, "/dev/null", O_RDONLY)); } },
        { "read", [] { transferDescriptor([](int file) { EXPECT_EQ(read(file, &byte, 1), 1); }); } },
        { "pread", [] { transferDescriptor([](int file) { EXPECT_EQ(pread(file, &byte, 1, 0), 1); }); } },
        { "write", [] { transferDescriptor([](int file) { EXPECT_EQ(write(file, "x", 1), 1); }); } },
        { "fopen", [] { transferFile("r", [](FILE*) { }); } },
        { "fopen64", [] { std::ifstream("/dev/null"); } },
        { "fread", [] { transferFile("r", [](FILE* file) { EXPECT_EQ(std::fread(&byte, 1, 1, file), 0U); }); } },
        { "fwrite", [] { transferFile("w", [](FILE* file) { EXPECT_EQ(std::fwrite(&byte, 1, 1, file), 1U); }); } },
        { "fputs", [] { transferFile("w", [](FILE* file) { EXPECT_GE(std::fputs("x", file), 0); }); } },
        { "fflush", [] { transferFile("w", [](FILE* file) { EXPECT_EQ(std::fflush(file), 0); }); } },
        { "vfprintf", [] { transferFile("w", [](FILE* file) { EXPECT_EQ(std::fprintf(file, "%d", 12), 2); }); } },
        { "vfprintf", [] { EXPECT_EQ(std::printf("%s", ""), 0); } },
        { "puts", [] { EXPECT_GE(std::puts(""), 0); } },
    };
    return cases;
}

void expectBites(const std::vector<Case>& cases)
{
    for (const Case& each : cases) {
        SCOPED_TRACE(each.function);
        each.call();
        EXPECT_THAT(takeRealtimeViolations(), IsEmpty()) << "outside a scope";
        {
            const RealtimeScope scope;
            each.call();
        }
        EXPECT_THAT(takeRealtimeViolations(), Contains(each.function));
        each.call();
        EXPECT_THAT(takeRealtimeViolations(), IsEmpty()) << "after the scope";
    }
}

TEST(RealtimeGuard, BitesOnMemory) { expectBites(memoryCases()); }
TEST(RealtimeGuard, BitesOnLocks) { expectBites(lockCases()); }
TEST(RealtimeGuard, BitesOnWaits) { expectBites(waitCases()); }
TEST(RealtimeGuard, BitesOnFiles) { expectBites(fileCases()); }

TEST(RealtimeGuard, LetsWakingAndLockFreeWorkPass)
{
    WithSemaphore semaphore;
    const int event = eventfd(0, EFD_NONBLOCK);
    std::atomic<int> value{ 0 };
    std::condition_variable waiters;
    {
        const RealtimeScope scope;
        const std::uint64_t one = 1;
        EXPECT_EQ(sem_post(semaphore.get()), 0);
        EXPECT_EQ(write(event, &one, sizeof one), static_cast<ssize_t>(sizeof one));
        value.fetch_add(1);
        value.notify_one();
        waiters.notify_one();
        std::free(nullptr);
    }
    close(event);
    EXPECT_THAT(takeRealtimeViolations(), IsEmpty());
}

TEST(RealtimeGuard, KnowsOnlyTheThreadInTheScopeAndNestedScopes)
{
    std::atomic<bool> inScope{ false };
    std::thread audio([&] {
        const RealtimeScope outer;
        {
            const RealtimeScope inner;
        }
        inScope = true;
        while (inScope) { }
        freeUsed(std::malloc(16));
    });
    while (!inScope) { }
    freeUsed(std::malloc(16));
    EXPECT_THAT(takeRealtimeViolations(), IsEmpty());
    inScope = false;
    audio.join();
    EXPECT_THAT(takeRealtimeViolations(), testing::ElementsAre("malloc", "free"));
}

void violate()
{
    const RealtimeScope scope;
    freeUsed(std::malloc(16));
}

TEST(RealtimeGuardDeathTest, TheCaseWithTheViolationFails)
{
    if (std::getenv("QUILLET_PROVOKE_VIOLATION") != nullptr) {
        violate();
        return;
    }
    EXPECT_EXIT(
        {
            setenv("QUILLET_PROVOKE_VIOLATION", "1", 1);
            execl("/proc/self/exe", "again", "--gtest_filter=*TheCaseWithTheViolationFails", nullptr);
        },
        testing::ExitedWithCode(1), "real-time violation: malloc(.|\n)*real-time violation: free");
}

TEST(RealtimeGuardDeathTest, ViolationsOutsideACaseFailTheProgram)
{
    EXPECT_EXIT(
        {
            violate();
            std::exit(0);
        },
        testing::ExitedWithCode(70), "real-time violation: malloc");
    EXPECT_DEATH(
        {
            setenv("QUILLET_REALTIME_ABORT", "1", 1);
            violate();
        },
        "real-time violation: malloc");
}

}  // namespace
}  // namespace quillet
