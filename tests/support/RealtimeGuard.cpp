#include "tests/support/RealtimeGuard.h"

#include "platform/base/RealtimeScope.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <malloc.h>
#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/select.h>
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
    if (std::getenv("QUILLET_REALTIME_ABORT") != nullptr) {
        printViolation(function);
        std::abort();
    }
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

/// For violations that no test case answers for: before, between and after the cases, and in programs without cases.
__attribute__((destructor)) void failAtExit()
{
    if (pendingRealtimeViolations() > 0)
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

std::int64_t pendingRealtimeViolations() { return violationCount.load() - takenCount.load(); }

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

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) noexcept
{
    quillet::check("malloc");
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept
{
    quillet::check("calloc");
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) noexcept
{
    quillet::check("realloc");
    return __libc_realloc(block, size);
}

void free(void* block) noexcept
{
    // free(nullptr) does nothing, and destructors of empty containers may say it.
    if (block != nullptr)
        quillet::check("free");
    __libc_free(block);
}

void* memalign(std::size_t alignment, std::size_t size) noexcept
{
    quillet::check("memalign");
    return __libc_memalign(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    quillet::check("aligned_alloc");
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept
{
    quillet::check("posix_memalign");
    if (alignment % sizeof(void*) != 0 || alignment == 0 || (alignment & (alignment - 1)) != 0)
        return EINVAL;
    void* const found = __libc_memalign(alignment, size);
    if (found == nullptr)
        return ENOMEM;
    *block = found;
    return 0;
}

#define QUILLET_INTERPOSE(result, name, specifier, parameters, arguments)                                                      \
    result name parameters specifier                                                                                           \
    {                                                                                                                          \
        static constinit quillet::Next<result parameters> next(#name);                                                         \
        quillet::check(#name);                                                                                                 \
        return next.get() arguments;                                                                                           \
    }

QUILLET_INTERPOSE(void*, mmap, noexcept, (void* at, std::size_t size, int protection, int flags, int file, off_t offset),
                  (at, size, protection, flags, file, offset))
QUILLET_INTERPOSE(int, munmap, noexcept, (void* at, std::size_t size), (at, size))

QUILLET_INTERPOSE(int, pthread_mutex_lock, noexcept, (pthread_mutex_t * mutex), (mutex))
QUILLET_INTERPOSE(int, pthread_mutex_trylock, noexcept, (pthread_mutex_t * mutex), (mutex))
QUILLET_INTERPOSE(int, pthread_mutex_timedlock, noexcept, (pthread_mutex_t * mutex, const timespec* until), (mutex, until))
QUILLET_INTERPOSE(int, pthread_mutex_clocklock, noexcept, (pthread_mutex_t * mutex, clockid_t clock, const timespec* until),
                  (mutex, clock, until))
QUILLET_INTERPOSE(int, pthread_rwlock_rdlock, noexcept, (pthread_rwlock_t * lock), (lock))
QUILLET_INTERPOSE(int, pthread_rwlock_wrlock, noexcept, (pthread_rwlock_t * lock), (lock))
QUILLET_INTERPOSE(int, pthread_rwlock_tryrdlock, noexcept, (pthread_rwlock_t * lock), (lock))
QUILLET_INTERPOSE(int, pthread_rwlock_trywrlock, noexcept, (pthread_rwlock_t * lock), (lock))
QUILLET_INTERPOSE(int, pthread_spin_lock, noexcept, (pthread_spinlock_t * lock), (lock))

QUILLET_INTERPOSE(int, pthread_cond_wait, , (pthread_cond_t * condition, pthread_mutex_t* mutex), (condition, mutex))
QUILLET_INTERPOSE(int, pthread_cond_timedwait, , (pthread_cond_t * condition, pthread_mutex_t* mutex, const timespec* until),
                  (condition, mutex, until))
QUILLET_INTERPOSE(int, pthread_cond_clockwait, ,
                  (pthread_cond_t * condition, pthread_mutex_t* mutex, clockid_t clock, const timespec* until),
                  (condition, mutex, clock, until))
QUILLET_INTERPOSE(int, pthread_join, , (pthread_t thread, void** result), (thread, result))
QUILLET_INTERPOSE(int, sem_wait, , (sem_t * semaphore), (semaphore))
QUILLET_INTERPOSE(int, sem_timedwait, , (sem_t * semaphore, const timespec* until), (semaphore, until))
QUILLET_INTERPOSE(int, sem_clockwait, , (sem_t * semaphore, clockid_t clock, const timespec* until), (semaphore, clock, until))
QUILLET_INTERPOSE(int, sched_yield, noexcept, (), ())
QUILLET_INTERPOSE(int, nanosleep, , (const timespec* wanted, timespec* left), (wanted, left))
QUILLET_INTERPOSE(int, clock_nanosleep, , (clockid_t clock, int flags, const timespec* wanted, timespec* left),
                  (clock, flags, wanted, left))
QUILLET_INTERPOSE(int, usleep, , (useconds_t microseconds), (microseconds))
QUILLET_INTERPOSE(unsigned int, sleep, , (unsigned int seconds), (seconds))
QUILLET_INTERPOSE(int, poll, , (pollfd * files, nfds_t count, int milliseconds), (files, count, milliseconds))
QUILLET_INTERPOSE(int, ppoll, , (pollfd * files, nfds_t count, const timespec* timeout, const sigset_t* signals),
                  (files, count, timeout, signals))
QUILLET_INTERPOSE(int, select, , (int count, fd_set* readable, fd_set* writable, fd_set* failed, timeval* timeout),
                  (count, readable, writable, failed, timeout))
QUILLET_INTERPOSE(int, epoll_wait, , (int descriptor, epoll_event* events, int count, int milliseconds),
                  (descriptor, events, count, milliseconds))

QUILLET_INTERPOSE(FILE*, fopen, , (const char* path, const char* mode), (path, mode))
QUILLET_INTERPOSE(FILE*, fopen64, , (const char* path, const char* mode), (path, mode))
QUILLET_INTERPOSE(ssize_t, read, , (int file, void* bytes, std::size_t size), (file, bytes, size))
QUILLET_INTERPOSE(ssize_t, pread, , (int file, void* bytes, std::size_t size, off_t offset), (file, bytes, size, offset))
QUILLET_INTERPOSE(std::size_t, fread, , (void* items, std::size_t size, std::size_t count, FILE* file),
                  (items, size, count, file))
QUILLET_INTERPOSE(std::size_t, fwrite, , (const void* items, std::size_t size, std::size_t count, FILE* file),
                  (items, size, count, file))
QUILLET_INTERPOSE(int, fputs, , (const char* text, FILE* file), (text, file))
QUILLET_INTERPOSE(int, puts, , (const char* text), (text))
QUILLET_INTERPOSE(int, fflush, , (FILE * file), (file))
QUILLET_INTERPOSE(int, vfprintf, , (FILE * file, const char* format, va_list arguments), (file, format, arguments))

ssize_t write(int file, const void* bytes, std::size_t size)
{
    static constinit quillet::Next<ssize_t(int, const void*, std::size_t)> next("write");
    if (quillet::realtimeDepth > 0 && !quillet::isEventDescriptor(file))
        quillet::check("write");
    return next.get()(file, bytes, size);
}

// Variadic functions pass on what may have been given; the C library ignores what the flags do not call for.

#define QUILLET_INTERPOSE_OPEN(name)                                                                                           \
    int name(const char* path, int flags, ...)                                                                                 \
    {                                                                                                                          \
        static constinit quillet::Next<int(const char*, int, ...)> next(#name);                                                \
        va_list rest;                                                                                                          \
        va_start(rest, flags);                                                                                                 \
        const unsigned int mode = va_arg(rest, unsigned int);                                                                  \
        va_end(rest);                                                                                                          \
        quillet::check(#name);                                                                                                 \
        return next.get()(path, flags, mode);                                                                                  \
    }

QUILLET_INTERPOSE_OPEN(open)
QUILLET_INTERPOSE_OPEN(open64)

int openat(int folder, const char* path, int flags, ...)
{
    static constinit quillet::Next<int(int, const char*, int, ...)> next("openat");
    va_list rest;
    va_start(rest, flags);
    const unsigned int mode = va_arg(rest, unsigned int);
    va_end(rest);
    quillet::check("openat");
    return next.get()(folder, path, flags, mode);
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
long syscall(long number, ...) noexcept
{
    static constinit quillet::Next<long(long, ...)> next("syscall");
    std::array<long, 6> rest{};
    va_list arguments;
    va_start(arguments, number);
    for (long& argument : rest)
        argument = va_arg(arguments, long);
    va_end(arguments);
    if (quillet::isFutexWait(number, static_cast<int>(rest[1])))
        quillet::check("futex wait");
    return next.get()(number, rest[0], rest[1], rest[2], rest[3], rest[4], rest[5]);
}

}  // extern "C"
