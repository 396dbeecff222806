// ProcessRunner on Qt's processes. Each child leads a session of its own, so that it can be ended with everything that it has
// started; if this program is killed, the child is asked to end.
// Threads: main thread, with an event loop.
#pragma once

#include "platform/process/ProcessRunner.h"

#include <memory>
#include <vector>

namespace quillet {

class QtProcessRunner final : public ProcessRunner {
public:
    QtProcessRunner();
    ~QtProcessRunner() override;

    void run(const ProcessRequest& request, Handlers handlers) override;

    /// Kills every child that runs with all that it has started. Their handlers are not called.
    void endAll();

private:
    class Child;
    std::vector<std::unique_ptr<Child>> m_children;
};

}  // namespace quillet
