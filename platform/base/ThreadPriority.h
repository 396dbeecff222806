// Lets a thread that makes sound run before those that may wait. What the user may do decides how far: a real-time round-robin
// schedule where the machine is set up for audio, else a higher nice level, else nothing, and the sound relies on its
// buffers alone. A thread that was refused the real-time schedule is named in `realtimeRequests`, for whoever can have it
// granted later; it does not ask anybody itself. And lets one that nobody waits for run after all others, beside a processor
// that it leaves free: a sound server's own threads need not be of any priority, and are late where all processors are taken.
// Threads: acts on the calling thread. No allocation, no lock, no wait.
#pragma once

namespace quillet {

enum class ThreadPriority { unchanged, raised, realtime };

/// Where it stands between those of the sound server, which are higher, and everything else.
constexpr int realtimePriority = 5;
constexpr int raisedNiceLevel = -11;
constexpr int loweredNiceLevel = 10;

/// What can be had at once.
ThreadPriority raiseThreadPriority() noexcept;

/// For good, since most users may not take it back; the threads that it starts from now on are as low.
void lowerThreadPriority() noexcept;

/// What the calling thread has now: it may have been granted more since, and a real-time schedule taken away (see
/// RealtimeTimeLimit).
[[nodiscard]] ThreadPriority currentThreadPriority() noexcept;

}  // namespace quillet
