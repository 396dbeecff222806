// Opens the file of the user's defaults, whatever has become of it: creates it and its folder where they are missing, keeps it
// for the user alone, moves a damaged one aside, and makes do with reading one that cannot be written.
// Threads: callable from every thread; two that open the same file take turns, and so do processes.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/defaults/SqliteConnection.h"

#include <memory>
#include <optional>

namespace quillet {

struct OpenedDefaults {
    /// Reads and writes if there is no `error`. Otherwise it only reads, what the file held when it was opened, or is null.
    std::unique_ptr<SqliteConnection> connection;
    /// Why the file cannot be written; never `damaged`.
    std::optional<DatabaseError> error;
    /// Where a damaged file was moved.
    std::optional<FilePath> movedAside;
};

/// `damage`: it has looked damaged in use, so all of it is checked.
enum class Suspicion { none, damage };

/// Waits up to the busy timeout for each lock of another program; it stays the connection's.
[[nodiscard]] OpenedDefaults openDefaultsFile(const FilePath& file, Suspicion suspicion, int busyTimeoutMilliseconds);

}  // namespace quillet
