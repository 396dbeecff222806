// Why a database file cannot be used, told from what SQLite or the system said.
// Threads: callable from every thread.
#pragma once

#include "platform/base/FilePath.h"

namespace quillet {

enum class DatabaseError {
    /// The file is no database, a broken one, or another program's.
    damaged,
    /// Another connection has it locked, and kept it so for the whole busy timeout.
    busy,
    /// No space is left, or the user's share of it is used up.
    full,
    /// It may not be written.
    readOnly,
    /// It may not be read, or cannot be opened for another reason.
    unreadable,
    /// The value can never be stored: it is larger than SQLite's limit (a billion bytes).
    refused,
    other,
};

/// What the system's error number means for the file; `otherwise` where it says nothing about space or permissions.
[[nodiscard]] DatabaseError databaseErrorOf(int systemError, const FilePath& file, DatabaseError otherwise);

}  // namespace quillet
