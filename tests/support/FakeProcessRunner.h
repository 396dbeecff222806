// Child processes that do what the test says.
// Threads: one.
#pragma once

#include "platform/process/ProcessRunner.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quillet {

class FakeProcessRunner final : public ProcessRunner {
public:
    class Child {
    public:
        Child(ProcessRequest asked, Handlers handlers)
            : request(std::move(asked)),
              m_handlers(std::make_shared<const Handlers>(std::move(handlers)))
        {
        }

        ProcessRequest request;
        /// Somebody has ended it before its time.
        bool wasEnded = false;

        void say(std::string_view onStandardError) const
        {
            if (const auto handlers = m_handlers)
                handlers->standardError(onStandardError);
        }
        void end(int status, std::string output)
        {
            if (const auto handlers = std::exchange(m_handlers, nullptr))
                handlers->ended(ProcessEnd{ status, std::move(output), {} });
        }
        void kill() { wasEnded = std::exchange(m_handlers, nullptr) != nullptr || wasEnded; }

    private:
        std::shared_ptr<const Handlers> m_handlers;
    };

    [[nodiscard]] std::unique_ptr<RunningProcess> run(const ProcessRequest& request, Handlers handlers) override
    {
        children.push_back(std::make_shared<Child>(request, std::move(handlers)));
        return std::make_unique<Handle>(children.back());
    }

    [[nodiscard]] Child& last() const { return *children.back(); }

    std::vector<std::shared_ptr<Child>> children;

private:
    struct Handle final : RunningProcess {
        explicit Handle(std::shared_ptr<Child> its)
            : child(std::move(its))
        {
        }
        ~Handle() override { child->kill(); }
        Handle(const Handle&) = delete;
        Handle& operator=(const Handle&) = delete;

        std::shared_ptr<Child> child;
    };
};

}  // namespace quillet
