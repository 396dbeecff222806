// Runs another program to its end, for tests that compare with an independent tool or start the program itself.
// Threads: any; the caller waits.
#pragma once

#include <string>
#include <vector>

namespace quillet {

struct CommandResult {
    /// The exit status, or 128 + the signal's number as a shell has it; 127 if the program could not be started.
    int status = 0;
    std::string output;
    std::string errorOutput;
};

/// `arguments` begins with the program, which is looked up in PATH. Standard input is empty.
CommandResult runCommand(const std::vector<std::string>& arguments);

}  // namespace quillet
