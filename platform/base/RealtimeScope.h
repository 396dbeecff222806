// Marks code that runs in (or as if in) the device callback, where nothing may allocate, free, lock, wait, log or throw.
// In a build with the guard a RealtimeScope tells the tests' interposer that its thread is inside such code; in every other
// build it is nothing. It checks nothing by itself.
// Threads: any; a scope belongs to the thread that made it.
#pragma once

/// Stands after the parameters of every function that the device callback reaches: `void mix(...) QUILLET_REALTIME;`
#define QUILLET_REALTIME noexcept

namespace quillet {

#ifdef QUILLET_REALTIME_GUARD

/// How many scopes the present thread is in.
inline constinit thread_local int realtimeDepth = 0;

class RealtimeScope {
public:
    RealtimeScope() noexcept { ++realtimeDepth; }
    ~RealtimeScope() { --realtimeDepth; }
    RealtimeScope(const RealtimeScope&) = delete;
    RealtimeScope& operator=(const RealtimeScope&) = delete;
};

#else

class [[maybe_unused]] RealtimeScope {
public:
    RealtimeScope() noexcept = default;
    ~RealtimeScope() = default;
    RealtimeScope(const RealtimeScope&) = delete;
    RealtimeScope& operator=(const RealtimeScope&) = delete;
};

#endif

}  // namespace quillet
