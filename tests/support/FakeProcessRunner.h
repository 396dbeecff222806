// Child processes that do what the test says.
// Threads: one.
#pragma once

#include "platform/process/ProcessRunner.h"

#include <string>
#include <utility>
#include <vector>

namespace quillet {

class FakeProcessRunner final : public ProcessRunner {
public:
    struct Child {
        ProcessRequest request;
        Handlers handlers;

        void say(std::string_view onStandardError) const { handlers.standardError(onStandardError); }
        void end(int status, std::string output, std::string errors = {}) const
        {
            handlers.ended(ProcessEnd{ status, std::move(output), std::move(errors) });
        }
    };

    void run(const ProcessRequest& request, Handlers handlers) override
    {
        children.push_back({ request, std::move(handlers) });
    }

    std::vector<Child> children;
};

}  // namespace quillet
