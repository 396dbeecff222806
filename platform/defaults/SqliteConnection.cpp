#include "platform/defaults/SqliteConnection.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace quillet {
namespace {

// The numbers are stored, so they never change.
enum class StoredType : std::int64_t { data = 0, string = 1, stringArray = 2, real = 3, integer = 4, boolean = 5 };

// A name or a text may hold any bytes, so both are bound as blobs.
int bindBytes(sqlite3_stmt* statement, int index, std::string_view bytes)
{
    // An empty view may have no address, and that would bind NULL.
    return sqlite3_bind_blob64(statement, index, bytes.empty() ? "" : bytes.data(), bytes.size(), SQLITE_TRANSIENT);
}

std::string bytesAt(sqlite3_stmt* statement, int column)
{
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
    return bytes != nullptr ? std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement, column))) : "";
}

/// The keys from `prefix` (?1) to the first one that begins otherwise (?2; NULL where there is none).
int bindPrefix(sqlite3_stmt* statement, std::string_view prefix)
{
    std::string end(prefix);
    while (!end.empty() && end.back() == '\xFF')
        end.pop_back();
    const int code = bindBytes(statement, 1, prefix);
    if (end.empty())
        return code | sqlite3_bind_null(statement, 2);
    ++end.back();
    return code | bindBytes(statement, 2, end);
}

/// The file's name in a URI, where SQLite can be told that nobody changes the file.
std::string immutableUri(const FilePath& file)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string uri = "file:";
    for (const char byte : file.native()) {
        const auto value = static_cast<unsigned char>(byte);
        ((uri += '%') += digits[value >> 4U]) += digits[value & 0xFU];
    }
    return uri + "?immutable=1";
}

struct ValueBinder {
    sqlite3_stmt* statement;
    int typeIndex;
    int valueIndex;

    int operator()(const DefaultsData& data) const { return bind(StoredType::data, data.bytes); }
    int operator()(const std::string& text) const { return bind(StoredType::string, text); }
    int operator()(const std::vector<std::string>& texts) const { return bind(StoredType::stringArray, packTexts(texts)); }
    int operator()(double real) const { return bindType(StoredType::real) | sqlite3_bind_double(statement, valueIndex, real); }
    int operator()(std::int64_t integer) const { return bind(StoredType::integer, integer); }
    int operator()(bool boolean) const { return bind(StoredType::boolean, std::int64_t{ boolean }); }

private:
    int bindType(StoredType type) const { return sqlite3_bind_int64(statement, typeIndex, static_cast<std::int64_t>(type)); }
    int bind(StoredType type, std::string_view bytes) const { return bindType(type) | bindBytes(statement, valueIndex, bytes); }
    int bind(StoredType type, std::int64_t integer) const
    {
        return bindType(type) | sqlite3_bind_int64(statement, valueIndex, integer);
    }
};

std::optional<DefaultsValue> valueAt(sqlite3_stmt* statement, int typeColumn, int valueColumn)
{
    const auto holds = [&](int columnType) { return sqlite3_column_type(statement, valueColumn) == columnType; };
    switch (StoredType{ sqlite3_column_int64(statement, typeColumn) }) {
    case StoredType::data:
        return holds(SQLITE_BLOB) ? std::optional(DefaultsData{ bytesAt(statement, valueColumn) }) : std::nullopt;
    case StoredType::string:
        return holds(SQLITE_BLOB) ? std::optional(bytesAt(statement, valueColumn)) : std::nullopt;
    case StoredType::stringArray:
        return holds(SQLITE_BLOB) ? unpackTexts(bytesAt(statement, valueColumn)) : std::nullopt;
    case StoredType::real:
        return holds(SQLITE_FLOAT) ? std::optional(sqlite3_column_double(statement, valueColumn)) : std::nullopt;
    case StoredType::integer:
        return holds(SQLITE_INTEGER) ? std::optional<std::int64_t>(sqlite3_column_int64(statement, valueColumn)) : std::nullopt;
    case StoredType::boolean:
        return holds(SQLITE_INTEGER) ? std::optional(sqlite3_column_int64(statement, valueColumn) != 0) : std::nullopt;
    }
    return std::nullopt;
}

}  // namespace

class SqliteConnection::Use {
public:
    explicit Use(const Statement& statement)
        : m_statement(statement.get())
    {
    }
    ~Use()
    {
        sqlite3_reset(m_statement);
        sqlite3_clear_bindings(m_statement);
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

    operator sqlite3_stmt*() const { return m_statement; }

private:
    sqlite3_stmt* m_statement;
};

SqliteConnection::SqliteConnection(FilePath file)
    : m_file(std::move(file))
{
}

auto SqliteConnection::open(const FilePath& file, int busyTimeoutMilliseconds) -> Result<std::unique_ptr<SqliteConnection>>
{
    std::unique_ptr<SqliteConnection> connection(new SqliteConnection(file));
    if (const auto opened = connection->openDatabase(file.c_str(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE); !opened)
        return std::unexpected(opened.error());
    // A file that may not be written opens all the same.
    if (connection->isReadOnly())
        return std::unexpected(DatabaseError::readOnly);
    connection->setBusyTimeout(busyTimeoutMilliseconds);
    if (const auto prepared = connection->prepareDatabase(); !prepared)
        return std::unexpected(prepared.error());
    if (const auto written = connection->tryToWrite(busyTimeoutMilliseconds); !written)
        return std::unexpected(written.error());
    return connection;
}

auto SqliteConnection::openForReading(const FilePath& file) -> Result<std::unique_ptr<SqliteConnection>>
{
    FilePath log = file;
    log += "-wal";
    std::error_code none;
    if (const auto bytes = std::filesystem::file_size(log, none); !none && bytes != 0)
        return std::unexpected(DatabaseError::unreadable);
    std::unique_ptr<SqliteConnection> connection(new SqliteConnection(file));
    if (const auto opened = connection->openDatabase(immutableUri(file).c_str(), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
        !opened)
        return std::unexpected(opened.error());
    if (const auto prepared = connection->prepareDatabase(); !prepared)
        return std::unexpected(prepared.error());
    return connection;
}

auto SqliteConnection::openDatabase(const char* name, int flags) -> Result<void>
{
    sqlite3* database = nullptr;
    const int code = sqlite3_open_v2(name, &database, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    m_database.reset(database);
    if (code != SQLITE_OK)
        return error(code);
    return {};
}

bool SqliteConnection::isReadOnly() const { return sqlite3_db_readonly(m_database.get(), "main") != 0; }

/// A connection may find out only now that it cannot write. It must not stay open then: it shares its index of the log with
/// those that this process opens later, and they could not write either.
auto SqliteConnection::tryToWrite(int busyTimeoutMilliseconds) -> Result<void>
{
    setBusyTimeout(0);
    const auto begun = execute("BEGIN IMMEDIATE; ROLLBACK");
    setBusyTimeout(busyTimeoutMilliseconds);
    return begun || begun.error() == DatabaseError::busy ? Result<void>() : begun;
}

auto SqliteConnection::prepareDatabase() -> Result<void>
{
    // The file becomes ours only once its tables are known to fit.
    if (const auto created =
            execute("CREATE TABLE IF NOT EXISTS defaults (key BLOB PRIMARY KEY, type INTEGER NOT NULL, value)");
        !created)
        return created;
    const std::pair<Statement*, std::string_view> statements[] = {
        { &m_read, "SELECT type, value FROM defaults WHERE key = ?1" },
        { &m_write,
          "INSERT INTO defaults (key, type, value) VALUES (?1, ?2, ?3)"
          " ON CONFLICT (key) DO UPDATE SET type = excluded.type, value = excluded.value" },
        { &m_remove, "DELETE FROM defaults WHERE key = ?1" },
        { &m_keysWithPrefix, "SELECT key FROM defaults WHERE key >= ?1 AND (?2 IS NULL OR key < ?2)" },
        { &m_sizeOfPrefix,
          "SELECT count(*), total(CASE WHEN type = 0 THEN length(value) ELSE 0 END) FROM defaults"
          " WHERE key >= ?1 AND (?2 IS NULL OR key < ?2)" },
        // A blob's length is in the row; the rest of a large value lies elsewhere and is not touched.
        { &m_dataOfPrefix,
          "SELECT rowid, key, length(value) FROM defaults"
          " WHERE type = 0 AND typeof(value) = 'blob' AND key >= ?1 AND (?2 IS NULL OR key < ?2)" },
    };
    for (const auto& [statement, text] : statements) {
        auto prepared = prepare(text);
        if (!prepared)
            return std::unexpected(prepared.error());
        *statement = std::move(*prepared);
    }
    return execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
}

auto SqliteConnection::execute(const char* text) -> Result<void>
{
    errno = 0;
    if (const int code = sqlite3_exec(m_database.get(), text, nullptr, nullptr, nullptr); code != SQLITE_OK)
        return error(code);
    return {};
}

auto SqliteConnection::prepare(std::string_view text) -> Result<Statement>
{
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v3(m_database.get(), text.data(), static_cast<int>(text.size()), SQLITE_PREPARE_PERSISTENT,
                                        &statement, nullptr);
    if (code != SQLITE_OK)
        return error(code);
    return Statement(statement);
}

auto SqliteConnection::read(std::string_view key) -> Result<std::optional<DefaultsValue>>
{
    const Use statement(m_read);
    if (const int code = bindBytes(statement, 1, key); code != SQLITE_OK)
        return error(code);
    switch (const int code = sqlite3_step(statement)) {
    case SQLITE_ROW:
        return valueAt(statement, 0, 1);
    case SQLITE_DONE:
        return std::nullopt;
    default:
        return error(code);
    }
}

auto SqliteConnection::write(std::string_view key, const DefaultsValue& value) -> Result<void>
{
    const Use statement(m_write);
    int code = bindBytes(statement, 1, key);
    if (code == SQLITE_OK)
        code = std::visit(ValueBinder{ statement, 2, 3 }, value);
    if (code != SQLITE_OK)
        return error(code);
    return finish(statement);
}

auto SqliteConnection::remove(std::string_view key) -> Result<void>
{
    const Use statement(m_remove);
    if (const int code = bindBytes(statement, 1, key); code != SQLITE_OK)
        return error(code);
    return finish(statement);
}

auto SqliteConnection::removeAll(std::span<const std::string> keys) -> Result<void>
{
    auto done = execute("BEGIN IMMEDIATE");
    if (!done)
        return done;
    for (auto key = keys.begin(); done && key != keys.end(); ++key)
        done = remove(*key);
    if (done)
        done = execute("COMMIT");
    if (!done) [[maybe_unused]]
        const auto undone = execute("ROLLBACK");
    return done;
}

auto SqliteConnection::keysWithPrefix(std::string_view prefix) -> Result<std::vector<std::string>>
{
    const Use statement(m_keysWithPrefix);
    if (const int code = bindPrefix(statement, prefix); code != SQLITE_OK)
        return error(code);
    std::vector<std::string> keys;
    int code = SQLITE_OK;
    while ((code = sqlite3_step(statement)) == SQLITE_ROW)
        keys.push_back(bytesAt(statement, 0));
    if (code != SQLITE_DONE)
        return error(code);
    return keys;
}

auto SqliteConnection::sizeOfPrefix(std::string_view prefix) -> Result<DefaultsSize>
{
    const Use statement(m_sizeOfPrefix);
    int code = bindPrefix(statement, prefix);
    if (code == SQLITE_OK)
        code = sqlite3_step(statement);
    if (code != SQLITE_ROW)
        return error(code);
    return DefaultsSize{ sqlite3_column_int64(statement, 0), static_cast<std::int64_t>(sqlite3_column_double(statement, 1)) };
}

auto SqliteConnection::dataHeads(std::string_view prefix, std::size_t headBytes) -> Result<std::vector<DefaultsHead>>
{
    const Use statement(m_dataOfPrefix);
    if (const int code = bindPrefix(statement, prefix); code != SQLITE_OK)
        return error(code);
    std::vector<DefaultsHead> heads;
    std::unique_ptr<sqlite3_blob, Closer> blob;
    int code = SQLITE_OK;
    while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
        const std::int64_t bytes = sqlite3_column_int64(statement, 2);
        const auto wanted = static_cast<int>(std::min<std::int64_t>(bytes, static_cast<std::int64_t>(headBytes)));
        auto head = readHead(blob, sqlite3_column_int64(statement, 0), wanted);
        if (!head)
            return std::unexpected(head.error());
        heads.push_back({ bytesAt(statement, 1), std::move(*head), bytes });
    }
    if (code != SQLITE_DONE)
        return error(code);
    return heads;
}

/// The first bytes of the value in `row`, which is a blob. `blob` is kept from row to row: moving it is cheap.
auto SqliteConnection::readHead(std::unique_ptr<sqlite3_blob, Closer>& blob, std::int64_t row, int bytes) -> Result<std::string>
{
    std::string head(static_cast<std::size_t>(bytes), '\0');
    int code = SQLITE_OK;
    if (blob != nullptr) {
        code = sqlite3_blob_reopen(blob.get(), row);
    } else {
        sqlite3_blob* opened = nullptr;
        code = sqlite3_blob_open(m_database.get(), "main", "defaults", "value", row, 0, &opened);
        blob.reset(opened);
    }
    if (code == SQLITE_OK)
        code = sqlite3_blob_read(blob.get(), head.data(), bytes, 0);
    if (code != SQLITE_OK)
        return error(code);
    return head;
}

void SqliteConnection::setBusyTimeout(int milliseconds) { sqlite3_busy_timeout(m_database.get(), milliseconds); }

bool SqliteConnection::isSound()
{
    const auto check = prepare("PRAGMA integrity_check(1)");
    const bool sound = check && sqlite3_step(check->get()) == SQLITE_ROW && bytesAt(check->get(), 0) == "ok";
    if (!sound)
        leaveLogAlone();
    return sound;
}

auto SqliteConnection::finish(sqlite3_stmt* statement) -> Result<void>
{
    errno = 0;
    if (const int code = sqlite3_step(statement); code != SQLITE_DONE)
        return error(code);
    return {};
}

/// A damaged file is kept for whoever wants to look into it, so closing it must not move the log's pages into it.
void SqliteConnection::leaveLogAlone() { sqlite3_db_config(m_database.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr); }

std::unexpected<DatabaseError> SqliteConnection::error(int code)
{
    const int systemError = errno;
    switch (code & 0xFF) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR:  // a statement that the file's tables do not fit
        leaveLogAlone();
        return std::unexpected(DatabaseError::damaged);
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
        return std::unexpected(DatabaseError::busy);
    case SQLITE_FULL:
        return std::unexpected(DatabaseError::full);
    case SQLITE_READONLY:
        return std::unexpected(DatabaseError::readOnly);
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return std::unexpected(DatabaseError::unreadable);
    case SQLITE_CANTOPEN:
        return std::unexpected(databaseErrorOf(sqlite3_system_errno(m_database.get()), m_file, DatabaseError::unreadable));
    case SQLITE_IOERR:
        // SQLite does not keep the system's error here. A missing file is one that it has only looked for afterwards.
        return std::unexpected(systemError == ENOENT ? DatabaseError::other
                                                     : databaseErrorOf(systemError, m_file, DatabaseError::other));
    case SQLITE_TOOBIG:
        return std::unexpected(DatabaseError::refused);
    default:
        return std::unexpected(DatabaseError::other);
    }
}

}  // namespace quillet
