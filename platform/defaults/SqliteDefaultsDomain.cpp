#include "platform/defaults/SqliteDefaultsDomain.h"

#include "platform/defaults/SqliteConnection.h"
#include "platform/files/UserDirectories.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <string>
#include <system_error>
#include <utility>

namespace quillet {
namespace {

/// Held by one process at a time for each directory.
class DirectoryLock {
public:
    explicit DirectoryLock(const FilePath& directory)
        : m_descriptor(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        while (::flock(m_descriptor, LOCK_EX) != 0 && errno == EINTR) { }
    }
    ~DirectoryLock() { ::close(m_descriptor); }
    DirectoryLock(const DirectoryLock&) = delete;
    DirectoryLock& operator=(const DirectoryLock&) = delete;

private:
    int m_descriptor;
};

FilePath withSuffix(const FilePath& file, const char* suffix)
{
    FilePath path = file;
    path += suffix;
    return path;
}

/// A name beside `file` that is not taken, with the time (UTC) in it.
FilePath asideName(const FilePath& file)
{
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm utc{};
    gmtime_r(&now, &utc);
    std::array<char, 32> time{};
    std::strftime(time.data(), time.size(), ".damaged-%Y%m%dT%H%M%SZ", &utc);
    FilePath name = withSuffix(file, time.data());
    std::error_code unknown;
    for (int i = 2; std::filesystem::exists(std::filesystem::symlink_status(name, unknown)); ++i)
        name = withSuffix(file, (time.data() + ('-' + std::to_string(i))).c_str());
    return name;
}

/// The log goes first: left behind, it would be taken for the log of the file that comes next.
bool moveAside(const FilePath& file)
{
    const FilePath name = asideName(file);
    for (const char* part : { "-wal", "-shm", "" }) {
        std::error_code failure;
        std::filesystem::rename(withSuffix(file, part), withSuffix(name, part), failure);
        if (failure && failure != std::errc::no_such_file_or_directory)
            return false;
    }
    return true;
}

}  // namespace

FilePath SqliteDefaultsDomain::standardFile() { return configDirectory() / "defaults.sqlite"; }

SqliteDefaultsDomain::SqliteDefaultsDomain(FilePath file)
    : m_file(std::move(file)),
      m_connection(open(Suspicion::none))
{
}

SqliteDefaultsDomain::~SqliteDefaultsDomain() = default;

std::unique_ptr<SqliteConnection> SqliteDefaultsDomain::open(Suspicion suspicion) const
{
    if (!createPrivateDirectory(m_file.parent_path()))
        return SqliteConnection::openInMemory();
    // One process at a time sets the file up, and none moves aside what another has just replaced.
    const DirectoryLock lock(m_file.parent_path());
    auto connection = SqliteConnection::open(m_file);
    if (connection && suspicion == Suspicion::damage && !(*connection)->isSound())
        connection = std::unexpected(DatabaseError::damaged);
    if (!connection && connection.error() == DatabaseError::damaged && moveAside(m_file))
        connection = SqliteConnection::open(m_file);
    return connection ? std::move(*connection) : SqliteConnection::openInMemory();
}

/// Performs it once more, on the new file, if it finds the file damaged.
template <typename Operation> auto SqliteDefaultsDomain::perform(Operation operation) const
{
    const std::scoped_lock lock(m_mutex);
    auto result = operation(*m_connection);
    if (!result && result.error() == DatabaseError::damaged) {
        m_connection.reset();
        m_connection = open(Suspicion::damage);
        result = operation(*m_connection);
    }
    return result;
}

void SqliteDefaultsDomain::remove(std::string_view key)
{
    static_cast<void>(perform([&](SqliteConnection& connection) { return connection.remove(key); }));
}

std::vector<std::string> SqliteDefaultsDomain::allKeys() const { return keysWithPrefix(""); }

void SqliteDefaultsDomain::removeAll(std::span<const std::string> keys)
{
    static_cast<void>(perform([&](SqliteConnection& connection) { return connection.removeAll(keys); }));
}

std::vector<std::string> SqliteDefaultsDomain::keysWithPrefix(std::string_view prefix) const
{
    return perform([&](SqliteConnection& connection) { return connection.keysWithPrefix(prefix); })
        .value_or(std::vector<std::string>{});
}

DefaultsSize SqliteDefaultsDomain::sizeOfPrefix(std::string_view prefix) const
{
    return perform([&](SqliteConnection& connection) { return connection.sizeOfPrefix(prefix); }).value_or(DefaultsSize{});
}

std::vector<DefaultsHead> SqliteDefaultsDomain::dataHeads(std::string_view prefix, std::size_t headBytes) const
{
    return perform([&](SqliteConnection& connection) { return connection.dataHeads(prefix, headBytes); })
        .value_or(std::vector<DefaultsHead>{});
}

std::optional<DefaultsValue> SqliteDefaultsDomain::read(std::string_view key) const
{
    return perform([&](SqliteConnection& connection) { return connection.read(key); }).value_or(std::nullopt);
}

void SqliteDefaultsDomain::write(std::string_view key, const DefaultsValue& value)
{
    static_cast<void>(perform([&](SqliteConnection& connection) { return connection.write(key, value); }));
}

}  // namespace quillet
