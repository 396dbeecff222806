// Why there are no stems, and how that is said to the user.
// Threads: values.
#pragma once

#include <string>
#include <variant>

namespace quillet {

/// What the program itself should bring along is not there.
struct MissingBinary {
    std::string name;
};
/// A step of the set-up has ended with an exit status that is not 0.
struct ProcessFailed {
    int exitStatus = 0;
    std::string errorText;
};
/// What the separation has said.
struct SeparationFailed {
    std::string message;
};
/// What the system has said: a program that does not start, a folder that cannot be made.
struct SystemRefused {
    std::string description;
};
/// The folder of the dependencies holds what is not Quillet's.
struct ForeignFolder {
    std::string path;
};
/// There is less room than the set-up takes.
struct NoSpace {
    std::string path;
    double neededBytes = 0;
    double freeBytes = 0;
};

using StemError = std::variant<MissingBinary, ProcessFailed, SeparationFailed, SystemRefused, ForeignFolder, NoSpace>;

/// In the user's language.
[[nodiscard]] std::string description(const StemError& error);

}  // namespace quillet
