// What the separation's child says, read.
// Threads: pure functions.
#pragma once

#include "platform/base/FilePath.h"

#include <expected>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quillet {

struct ProgressMessage {
    std::string text;

    /// What the separation says when all is written.
    [[nodiscard]] bool isDone() const { return text == "Done."; }
    bool operator==(const ProgressMessage&) const = default;
};
/// 0 to 1.
using ProgressFraction = double;
using ProgressUpdate = std::variant<ProgressMessage, ProgressFraction>;

/// The updates in one chunk of standard error, in their order: an object of texts with a "message", or a whole percentage. A
/// line that was cut into two chunks is two lines; a chunk that is not UTF-8 says nothing.
[[nodiscard]] std::vector<ProgressUpdate> progressIn(std::string_view chunk);

/// The stems that the child names on standard output, a file under each key; else what to tell the user.
[[nodiscard]] std::expected<std::map<std::string, FilePath>, std::string>
separationResult(int exitStatus, std::string_view output, std::string_view errorOutput);

/// Without the white space around it; empty for what is not UTF-8.
[[nodiscard]] std::string trimmedText(std::string_view bytes);

}  // namespace quillet
