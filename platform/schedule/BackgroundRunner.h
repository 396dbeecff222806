// Work that may wait for a disk, or compute for seconds: it runs beside the main thread and answers through Scheduler::post. It
// cannot be called off from outside.
// Threads: `run` on the main thread; jobs on threads of their own.
#pragma once

#include <functional>

namespace quillet {

class BackgroundRunner {
public:
    using Job = std::function<void()>;

    virtual ~BackgroundRunner() = default;

    /// Starts `job` at once, whatever else runs: a job that hangs (a network drive that is gone) holds up no other. What it
    /// uses outlives it.
    virtual void run(Job job) = 0;
};

}  // namespace quillet
