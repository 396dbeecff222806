// Child processes: a program with a list of arguments, never a shell. Both pipes are drained while the child runs. It inherits
// standard input and the environment; whatever it starts in its turn belongs to it and ends with the runner.
// Threads: main thread; handlers run there, never inside `run`.
#pragma once

#include "platform/base/FilePath.h"

#include <expected>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

struct ProcessRequest {
    FilePath executable;
    /// Without the program's own name.
    std::vector<std::string> arguments;
    FilePath workingDirectory;
};

struct ProcessEnd {
    /// The exit status, or the number of the signal that ended the child.
    int status = 0;
    std::string standardOutput;
    std::string standardError;
};

/// The child could not be started; the system's reason, for the user.
struct ProcessStartError {
    std::string description;
};

class ProcessRunner {
public:
    struct Handlers {
        /// Given standard error piece by piece as it comes, cut anywhere; may be empty. All of it comes before the end.
        std::function<void(std::string_view bytes)> standardError;
        /// Called once, unless the runner ends before the child does.
        std::function<void(std::expected<ProcessEnd, ProcessStartError> end)> ended;
    };

    virtual ~ProcessRunner() = default;

    virtual void run(const ProcessRequest& request, Handlers handlers) = 0;
};

}  // namespace quillet
