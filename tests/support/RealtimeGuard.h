// The real-time guard: with it linked into a program, a thread inside a RealtimeScope that allocates, frees, locks, waits or
// touches a file is caught, with a stack trace on standard error. A GoogleTest case in which that happens fails; whatever is
// caught outside a case turns the program's exit status into 70. It sees calls of library functions, not system calls
// made by other means. Waking is allowed: sem_post, condition-variable notification, a write to an eventfd.
// Threads: violations are recorded on every thread without locks; the function below is for the main thread.
#pragma once

#include <string>
#include <vector>

namespace quillet {

/// The functions that were called in a real-time scope since the last take, oldest first (the first 64 of them), for a test
/// that provokes violations: what it takes does not make it fail.
std::vector<std::string> takeRealtimeViolations();

}  // namespace quillet
