#include "tests/support/RealtimeGuard.h"

#include "platform/base/RealtimeScope.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <execinfo.h>
#include <linux/futex.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quillet {
namespace {

constexpr std::size_t maximumRecords = 64;
constexpr std::int64_t maximumTraces = 8;

constinit std::array<std::atomic<const char*>, maximumRecords> records{};
constinit std::atomic<std::int64_t> violationCount{ 0 };
constinit std::atomic<std::int64_t> takenCount{ 0 };

void printViolation(const char* function)
{
    std::array<void*, 48> frames{};
    const int depth = backtrace(frames.data(), static_cast<int>(frames.size()));
    std::array<char, 160> line{};
    const int length =
        std::snprintf(line.data(), line.size(), "real-time violation: %s called in a real-time scope\n", function);
    if (::write(STDERR_FILENO, line.data(), static_cast<std::size_t>(length)) == length)
        backtrace_symbols_fd(frames.data(), depth, STDERR_FILENO);
}

/// Records the call of `function` if the thread is in a real-time scope. Reporting allocates and writes itself, so the
/// scope is left for as long as it takes.
void check(const char* function) noexcept
{
    if (realtimeDepth == 0)
        return;
    const int depth = realtimeDepth;
    realtimeDepth = 0;
    const std::int64_t index = violationCount.fetch_add(1);
    records[static_cast<std::size_t>(index) % maximumRecords].store(function);
    if (index - takenCount.load() < maximumTraces)
        printViolation(function);
    realtimeDepth = depth;
}

/// The first call of backtrace() loads a library; that is done before any audio runs.
__attribute__((constructor)) void warmUpBacktrace()
{
    std::array<void*, 4> frames{};
    backtrace(frames.data(), static_cast<int>(frames.size()));
}

std::int64_t pendingViolations() { return violationCount.load() - takenCount.load(); }

/// For violations that no test case answers for: before, between and after the cases, and in programs without cases.
__attribute__((destructor)) void failAtExit()
{
    if (pendingViolations() > 0)
        _exit(70);
}

/// The function that the program would call without the guard. No function-local static: its lock would be interposed too.
template <typename Function> class Next {
public:
    explicit constexpr Next(const char* name)
        : m_name(name)
    {
    }
    Function* get() noexcept
    {
        void* address = m_address.load(std::memory_order_acquire);
        if (address == nullptr) {
            address = dlsym(RTLD_NEXT, m_name);
            m_address.store(address, std::memory_order_release);
        }
        return reinterpret_cast<Function*>(address);
    }

private:
    const char* m_name;
    std::atomic<void*> m_address{ nullptr };
};

/// Makes the case fail in which something was caught.
class Listener : public testing::EmptyTestEventListener {
    void OnTestEnd(const testing::TestInfo&) override
    {
        if (const std::int64_t count = pendingViolations(); count > 0)
            ADD_FAILURE() << count << " calls in a real-time scope (stack traces above): "
                          << testing::PrintToString(takeRealtimeViolations());
    }
};

// GoogleTest takes ownership.
[[maybe_unused]] const bool installed = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new Listener);
    return true;
}();

bool isEventDescriptor(int descriptor) noexcept
{
    struct stat status{};
    return fstat(descriptor, &status) == 0 && (status.st_mode & S_IFMT) == 0;
}

bool isFutexWait(long number, int operation) noexcept
{
    const int command = operation & FUTEX_CMD_MASK;
    return number == SYS_futex
        && (command == FUTEX_WAIT || command == FUTEX_WAIT_BITSET || command == FUTEX_LOCK_PI || command == FUTEX_LOCK_PI2);
}

}  // namespace

std::vector<std::string> takeRealtimeViolations()
{
    std::vector<std::string> functions;
    const std::int64_t end = violationCount.load();
    const std::int64_t begin = takenCount.exchange(end);
    for (std::int64_t i = begin; i < end && i - begin < static_cast<std::int64_t>(maximumRecords); ++i)
        functions.emplace_back(records[static_cast<std::size_t>(i) % maximumRecords].load());
    return functions;
}

}  // namespace quillet

// The definitions below stand in front of those of the C library. The allocator is reached by glibc's own second names rather
// than dlsym, which may allocate itself and would come back here before there is an answer.

extern "C" {

/// `function` of up to six integers and pointers: what the registers hold is passed on, whatever they stand for.
#define QUILLET_INTERPOSE_TO(function, next)                                                                                   \
    long interposed_##function(long a, long b, long c, long d, long e, long f) __asm__(#function);                             \
    long interposed_##function(long a, long b, long c, long d, long e, long f)                                                 \
    {                                                                                                                          \
        quillet::check(#function);                                                                                             \
        return next(a, b, c, d, e, f);                                                                                         \
    }

#define QUILLET_INTERPOSE(function)                                                                                            \
    static constinit quillet::Next<long(long, long, long, long, long, long)> next_##function(#function);                       \
    QUILLET_INTERPOSE_TO(function, next_##function.get())

#define QUILLET_INTERPOSE_ALLOCATOR(function)                                                                                  \
    long __libc_##function(long, long, long, long, long, long);                                                                \
    QUILLET_INTERPOSE_TO(function, __libc_##function)

QUILLET_INTERPOSE_ALLOCATOR(malloc)
QUILLET_INTERPOSE_ALLOCATOR(calloc)
QUILLET_INTERPOSE_ALLOCATOR(realloc)
QUILLET_INTERPOSE_ALLOCATOR(memalign)
QUILLET_INTERPOSE(aligned_alloc)
QUILLET_INTERPOSE(posix_memalign)

void __libc_free(void* block);

void free(void* block) noexcept
{
    // free(nullptr) does nothing, and destructors of empty containers may say it.
    if (block != nullptr)
        quillet::check("free");
    __libc_free(block);
}

QUILLET_INTERPOSE(mmap)
QUILLET_INTERPOSE(munmap)

QUILLET_INTERPOSE(pthread_mutex_lock)
QUILLET_INTERPOSE(pthread_mutex_trylock)
QUILLET_INTERPOSE(pthread_mutex_timedlock)
QUILLET_INTERPOSE(pthread_mutex_clocklock)
QUILLET_INTERPOSE(pthread_rwlock_rdlock)
QUILLET_INTERPOSE(pthread_rwlock_wrlock)
QUILLET_INTERPOSE(pthread_rwlock_tryrdlock)
QUILLET_INTERPOSE(pthread_rwlock_trywrlock)
QUILLET_INTERPOSE(pthread_spin_lock)

QUILLET_INTERPOSE(pthread_cond_wait)
QUILLET_INTERPOSE(pthread_cond_timedwait)
QUILLET_INTERPOSE(pthread_cond_clockwait)
QUILLET_INTERPOSE(pthread_join)
QUILLET_INTERPOSE(sem_wait)
QUILLET_INTERPOSE(sem_timedwait)
QUILLET_INTERPOSE(sem_clockwait)
QUILLET_INTERPOSE(sched_yield)
QUILLET_INTERPOSE(nanosleep)
QUILLET_INTERPOSE(clock_nanosleep)
QUILLET_INTERPOSE(usleep)
QUILLET_INTERPOSE(sleep)
QUILLET_INTERPOSE(poll)
QUILLET_INTERPOSE(ppoll)
QUILLET_INTERPOSE(select)
QUILLET_INTERPOSE(epoll_wait)

QUILLET_INTERPOSE(fopen)
QUILLET_INTERPOSE(fopen64)
QUILLET_INTERPOSE(open)
QUILLET_INTERPOSE(open64)
QUILLET_INTERPOSE(openat)
QUILLET_INTERPOSE(read)
QUILLET_INTERPOSE(pread)
QUILLET_INTERPOSE(fread)
QUILLET_INTERPOSE(fwrite)
QUILLET_INTERPOSE(fputs)
QUILLET_INTERPOSE(puts)
QUILLET_INTERPOSE(fflush)
QUILLET_INTERPOSE(vfprintf)

ssize_t write(int file, const void* bytes, std::size_t size)
{
    static constinit quillet::Next<ssize_t(int, const void*, std::size_t)> next("write");
    if (quillet::realtimeDepth > 0 && !quillet::isEventDescriptor(file))
        quillet::check("write");
    return next.get()(file, bytes, size);
}

int printf(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int length = vfprintf(stdout, format, arguments);
    va_end(arguments);
    return length;
}

int fprintf(FILE* file, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int length = vfprintf(file, format, arguments);
    va_end(arguments);
    return length;
}

/// std::atomic::wait, semaphores and latches wait here.
long interposed_syscall(long number, long a, long b, long c, long d, long e, long f) __asm__("syscall");
long interposed_syscall(long number, long a, long b, long c, long d, long e, long f)
{
    static constinit quillet::Next<long(long, long, long, long, long, long, long)> next("syscall");
    if (quillet::isFutexWait(number, static_cast<int>(b)))
        quillet::check("futex wait");
    return next.get()(number, a, b, c, d, e, f);
}

}  // extern "C"
