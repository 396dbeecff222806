// BackgroundRunner with one thread for each job. It keeps no threads for later: jobs are few and long.
// Threads: as BackgroundRunner says; all else on the thread that made it.
#pragma once

#include "platform/schedule/BackgroundRunner.h"

#include <memory>

namespace quillet {

class ThreadRunner final : public BackgroundRunner {
public:
    ThreadRunner();
    /// Waits for the jobs that run.
    ~ThreadRunner() override;
    ThreadRunner(const ThreadRunner&) = delete;
    ThreadRunner& operator=(const ThreadRunner&) = delete;

    void run(Job job) override;

    /// Waits up to `seconds` for the jobs that run; whether all have ended. If not, the one way out of the program is one that
    /// destroys nothing they may still touch (std::_Exit).
    [[nodiscard]] bool finish(double seconds);

private:
    struct Shared;
    /// Outlives this object as long as jobs run.
    std::shared_ptr<Shared> m_shared;
};

}  // namespace quillet
