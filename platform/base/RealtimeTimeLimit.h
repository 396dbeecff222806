// Bounds how long a thread in a real-time schedule may compute without a pause, which the system demands of a program that it
// grants the schedule to: past the limit it would kill the program. Here the threads that were granted the schedule lose
// it shortly before, and go on without. A thread that decodes minutes of sound to get to a place does pass the limit.
// It grants nothing itself.
// Threads: any; the threads lose the schedule in a signal handler (SIGXCPU).
#pragma once

#include <cstdint>

#include <sys/types.h>

namespace quillet {

/// Sets the limit for the whole process, from now on: a higher one cannot be had again. False if the system refuses.
[[nodiscard]] bool limitRealtimeRuns(std::int64_t microseconds);

/// Makes `thread` one that loses the schedule when any passes the limit. Before it gets it.
void watchRealtimeThread(pid_t thread) noexcept;

}  // namespace quillet
