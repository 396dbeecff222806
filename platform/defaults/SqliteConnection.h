// One open database of defaults: a table of keys, types and values, and the statements over it. It says why something failed;
// what is done about it is the domain's business.
// Threads: one thread at a time.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/defaults/DatabaseError.h"
#include "platform/defaults/DefaultsDomain.h"
#include "platform/defaults/DefaultsValue.h"

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

class SqliteConnection {
public:
    template <typename T> using Result = std::expected<T, DatabaseError>;

    /// Opens the file for reading and writing, and creates it where it is missing. Its directory exists.
    static Result<std::unique_ptr<SqliteConnection>> open(const FilePath& file, int busyTimeoutMilliseconds);
    /// Opens a file that cannot be written, and whose log cannot be created. The connection takes no locks and sees no changes
    /// of others. It is refused while there is a log: the file alone would be out of date.
    static Result<std::unique_ptr<SqliteConnection>> openForReading(const FilePath& file);

    [[nodiscard]] bool isReadOnly() const;

    /// Nothing if the key is missing, or its value is not of the type that it was stored with.
    Result<std::optional<DefaultsValue>> read(std::string_view key);
    /// When it answers without an error, the value outlives this process however it ends.
    Result<void> write(std::string_view key, const DefaultsValue& value);
    Result<void> remove(std::string_view key);
    /// All or, after an error, none.
    Result<void> removeAll(std::span<const std::string> keys);

    // Of the keys that begin with `prefix` ("": all of them).
    Result<std::vector<std::string>> keysWithPrefix(std::string_view prefix);
    Result<DefaultsSize> sizeOfPrefix(std::string_view prefix);
    Result<std::vector<DefaultsHead>> dataHeads(std::string_view prefix, std::size_t headBytes);

    /// How long a write waits while another connection is writing.
    void setBusyTimeout(int milliseconds);

    /// Reads the whole file and tells whether it is sound.
    [[nodiscard]] bool isSound();

private:
    struct Closer {
        void operator()(sqlite3* database) const { sqlite3_close(database); }
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
        void operator()(sqlite3_blob* blob) const { sqlite3_blob_close(blob); }
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Closer>;

    /// Makes a statement ready for its next use when it goes out of scope, and ends its transaction so.
    class Use;

    explicit SqliteConnection(FilePath file);
    Result<void> openDatabase(const char* name, int flags);
    Result<void> prepareDatabase();
    Result<void> tryToWrite(int busyTimeoutMilliseconds);
    Result<void> execute(const char* text);
    Result<Statement> prepare(std::string_view text);
    Result<void> finish(sqlite3_stmt* statement);
    Result<std::string> readHead(std::unique_ptr<sqlite3_blob, Closer>& blob, std::int64_t row, int bytes);
    void leaveLogAlone();
    [[nodiscard]] std::unexpected<DatabaseError> error(int code);

    const FilePath m_file;
    std::unique_ptr<sqlite3, Closer> m_database;
    Statement m_read;
    Statement m_write;
    Statement m_remove;
    Statement m_keysWithPrefix;
    Statement m_sizeOfPrefix;
    Statement m_dataOfPrefix;
};

}  // namespace quillet
