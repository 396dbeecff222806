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
    struct Child {
        ProcessRequest request;
        /// None when it has ended or somebody has ended it before its time.
        std::shared_ptr<const Handlers> handlers;
        bool wasEnded = false;
        bool wasAskedToEnd = false;

        void say(std::string_view onStandardError) const
        {
            if (const auto kept = handlers)
                kept->standardError(onStandardError);
        }
        void end(int status, std::string output, std::string errors = {})
        {
            if (const auto kept = std::exchange(handlers, nullptr))
                kept->ended(ProcessEnd{ status, std::move(output), std::move(errors) });
        }
    };

    [[nodiscard]] std::unique_ptr<RunningProcess> run(const ProcessRequest& request, Handlers handlers) override
    {
        children.push_back(std::make_shared<Child>(request, std::make_shared<const Handlers>(std::move(handlers))));
        struct Handle final : RunningProcess {
            Handle() = default;
            ~Handle() override { child->wasEnded = std::exchange(child->handlers, nullptr) != nullptr; }
            Handle(const Handle&) = delete;
            Handle& operator=(const Handle&) = delete;

            void terminate() override { child->wasAskedToEnd = true; }

            std::shared_ptr<Child> child;
        };
        auto handle = std::make_unique<Handle>();
        handle->child = children.back();
        return handle;
    }

    [[nodiscard]] Child& last() const { return *children.back(); }

    std::vector<std::shared_ptr<Child>> children;
};

}  // namespace quillet
