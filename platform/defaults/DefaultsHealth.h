// Whether the user's settings are being kept: what stops them from being written, if anything does, and where a damaged file
// went. What the user is told about it is not decided here.
// Threads: a value, no shared state.
#pragma once

#include "platform/base/FilePath.h"

#include <optional>

namespace quillet {

struct DefaultsHealth {
    enum class Trouble {
        none,
        /// Another program has had the file locked for seconds.
        busy,
        /// No space is left, or the user's share of it is used up.
        full,
        /// The file or its folder may not be written.
        readOnly,
        /// The file or its folder may not be read, or cannot be opened for another reason.
        unreadable,
        other,
    };

    /// As long as it is not `none`, what has been set since is in memory alone.
    Trouble trouble = Trouble::none;
    /// The settings' file.
    FilePath file;
    /// Where the last damaged file was moved, if there was one.
    std::optional<FilePath> movedAside;

    bool operator==(const DefaultsHealth&) const = default;
};

}  // namespace quillet
