// Child processes: a program with a list of arguments, never a shell. Both pipes are drained while the child runs. It inherits
// the environment; whatever it starts in its turn belongs to it and ends with it.
// Threads: main thread; handlers run there, never inside `run`.
#pragma once

#include "platform/base/FilePath.h"

#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

enum class ProcessInput {
    /// This program's own standard input.
    inherited,
    /// It is at its end from the start.
    none,
};

struct ProcessRequest {
    FilePath executable;
    /// Without the program's own name.
    std::vector<std::string> arguments;
    FilePath workingDirectory;
    ProcessInput input = ProcessInput::inherited;
};

struct ProcessEnd {
    /// The exit status, or the number of the signal that ended the child.
    int status = 0;
    /// What no handler has been given.
    std::string standardOutput;
    std::string standardError;
};

/// The child could not be started; the system's reason, for the user.
struct ProcessStartError {
    std::string description;
};

/// A child for as long as somebody wants it. Destroying this kills the child with everything that it has started, without
/// waiting for their end, and guarantees that none of its handlers is called any more; harmless if the child has ended. A
/// handler may do it, and it may be done after the runner's end.
class RunningProcess {
public:
    RunningProcess() = default;
    virtual ~RunningProcess() = default;
    RunningProcess(const RunningProcess&) = delete;
    RunningProcess& operator=(const RunningProcess&) = delete;

    /// Asks the child to end (SIGTERM), which it may take its time for, or not do. Harmless if it has ended.
    virtual void terminate() = 0;
};

class ProcessRunner {
public:
    struct Handlers {
        /// Given what the child writes as it comes, cut anywhere (LineSplitter); may be empty. All of it comes before the end.
        std::function<void(std::string_view bytes)> standardOutput;
        std::function<void(std::string_view bytes)> standardError;
        /// Called once, unless the child is ended from here.
        std::function<void(std::expected<ProcessEnd, ProcessStartError> end)> ended;
    };

    virtual ~ProcessRunner() = default;

    [[nodiscard]] virtual std::unique_ptr<RunningProcess> run(const ProcessRequest& request, Handlers handlers) = 0;
};

}  // namespace quillet
