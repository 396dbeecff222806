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
    QtProcessRunner(const QtProcessRunner&) = delete;
    QtProcessRunner& operator=(const QtProcessRunner&) = delete;

    [[nodiscard]] std::unique_ptr<RunningProcess> run(const ProcessRequest& request, Handlers handlers) override;

    /// Ends every child that runs, as destroying its RunningProcess does.
    void endAll();

private:
    class Child;
    class Handle;
    std::vector<std::shared_ptr<Child>> m_children;
};

}  // namespace quillet
