// What the thread sanitizer's runtime gets wrong or does not know, in programs that are built with it.
// Threads: any.
#include <cstdarg>
#include <ctime>

#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>
#include <semaphore.h>
#include <sys/types.h>

extern "C" {

int __clone(int (*function)(void*), void* stack, int flags, void* argument, ...);

/// The runtime's own takes every child for a copy of the process. Qt starts its children in the parent's memory, to which the
/// bookkeeping for a copy is fatal. The C library's is enough: the parent stands still until the child has become another
/// program.
int clone(int (*function)(void*), void* stack, int flags, void* argument, ...)
{
    va_list rest;
    va_start(rest, argument);
    auto* parentThread = va_arg(rest, pid_t*);
    void* storage = va_arg(rest, void*);
    auto* childThread = va_arg(rest, pid_t*);
    va_end(rest);
    return __clone(function, stack, flags, argument, parentThread, storage, childThread);
}

/// Unknown to the runtime: what came before the wake would seem unordered with what comes after it.
int sem_clockwait(sem_t* semaphore, clockid_t clock, const timespec* until)
{
    using Function = int(sem_t*, clockid_t, const timespec*);
    static auto* const next = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "sem_clockwait"));
    const int result = next(semaphore, clock, until);
    if (result == 0)
        __tsan_acquire(semaphore);
    return result;
}

}  // extern "C"
