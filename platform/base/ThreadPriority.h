// Lets a thread that makes sound run before those that may wait. What the user may do decides how far: a real-time round-robin
// schedule where the machine is set up for audio, else a higher nice level, else nothing, and the sound relies on its
// buffers alone.
// Threads: acts on the calling thread. No allocation, no lock.
#pragma once

namespace quillet {

enum class ThreadPriority { unchanged, raised, realtime };

ThreadPriority raiseThreadPriority() noexcept;

}  // namespace quillet
