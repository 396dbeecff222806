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

/// How long a write waits for another process: less than anybody notices. And at the very end, when nothing else is left.
constexpr int patienceMilliseconds = 20;
constexpr int lastPatienceMilliseconds = 5000;
constexpr std::chrono::milliseconds retryInterval{ 100 };

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

SqliteDefaultsDomain::~SqliteDefaultsDomain()
{
    m_retries = {};
    const std::scoped_lock lock(m_mutex);
    m_connection->setPatience(lastPatienceMilliseconds);
    static_cast<void>(writeLate());
}

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
    auto opened = connection ? std::move(*connection) : SqliteConnection::openInMemory();
    opened->setPatience(patienceMilliseconds);
    return opened;
}

/// Performs it once more, on the new file, if it finds the file damaged.
template <typename Operation> auto SqliteDefaultsDomain::perform(Operation operation) const
{
    auto result = operation(*m_connection);
    if (!result && result.error() == DatabaseError::damaged) {
        m_connection.reset();
        m_connection = open(Suspicion::damage);
        result = operation(*m_connection);
    }
    return result;
}

// ---- Writing ----

void SqliteDefaultsDomain::write(std::string_view key, const DefaultsValue& value)
{
    const std::scoped_lock lock(m_mutex);
    writeOrKeep(key, value);
}

void SqliteDefaultsDomain::remove(std::string_view key)
{
    const std::scoped_lock lock(m_mutex);
    writeOrKeep(key, std::nullopt);
}

void SqliteDefaultsDomain::removeAll(std::span<const std::string> keys)
{
    const std::scoped_lock lock(m_mutex);
    if (writeLate()) {
        const auto removed = perform([&](SqliteConnection& connection) { return connection.removeAll(keys); });
        if (removed || removed.error() != DatabaseError::busy)
            return;
    }
    for (const std::string& key : keys)
        m_late.insert_or_assign(key, std::nullopt);
    retryLater();
}

/// A write behind others that are late is late too: it must not come before them.
void SqliteDefaultsDomain::writeOrKeep(std::string_view key, std::optional<DefaultsValue> value)
{
    m_late.insert_or_assign(std::string(key), std::move(value));
    if (!writeLate())
        retryLater();
}

/// Writes what is late; true if nothing is any more. What cannot be written at all is dropped: nothing better can be done.
bool SqliteDefaultsDomain::writeLate()
{
    while (!m_late.empty()) {
        const auto first = m_late.begin();
        const auto done = perform([&](SqliteConnection& connection) {
            return first->second ? connection.write(first->first, *first->second) : connection.remove(first->first);
        });
        if (!done && done.error() == DatabaseError::busy)
            return false;
        m_late.erase(first);
    }
    return true;
}

void SqliteDefaultsDomain::retryLater()
{
    if (m_retrying)
        return;
    m_retrying = true;
    m_retries = std::jthread([this](const std::stop_token& stop) {
        std::unique_lock lock(m_mutex);
        do
            m_stopped.wait_for(lock, stop, retryInterval, [] { return false; });
        while (!stop.stop_requested() && !writeLate());
        m_retrying = false;
    });
}

// ---- Reading ----

std::optional<DefaultsValue> SqliteDefaultsDomain::read(std::string_view key) const
{
    const std::scoped_lock lock(m_mutex);
    if (const auto late = m_late.find(key); late != m_late.end())
        return late->second;
    return perform([&](SqliteConnection& connection) { return connection.read(key); }).value_or(std::nullopt);
}

std::vector<std::string> SqliteDefaultsDomain::allKeys() const { return keysWithPrefix(""); }

std::vector<std::string> SqliteDefaultsDomain::keysWithPrefix(std::string_view prefix) const
{
    const std::scoped_lock lock(m_mutex);
    return keysUnderLock(prefix);
}

DefaultsSize SqliteDefaultsDomain::sizeOfPrefix(std::string_view prefix) const
{
    const std::scoped_lock lock(m_mutex);
    if (m_late.empty())
        return perform([&](SqliteConnection& connection) { return connection.sizeOfPrefix(prefix); }).value_or(DefaultsSize{});
    DefaultsSize size{ static_cast<std::int64_t>(keysUnderLock(prefix).size()), 0 };
    for (const DefaultsHead& head : headsUnderLock(prefix, 0))
        size.dataBytes += head.byteCount;
    return size;
}

std::vector<DefaultsHead> SqliteDefaultsDomain::dataHeads(std::string_view prefix, std::size_t headBytes) const
{
    const std::scoped_lock lock(m_mutex);
    return headsUnderLock(prefix, headBytes);
}

std::vector<std::string> SqliteDefaultsDomain::keysUnderLock(std::string_view prefix) const
{
    auto keys = perform([&](SqliteConnection& connection) {
                    return connection.keysWithPrefix(prefix);
                }).value_or(std::vector<std::string>{});
    if (!m_late.empty())
        std::erase_if(keys, [&](const std::string& key) { return m_late.contains(key); });
    for (auto late = m_late.lower_bound(prefix); late != m_late.end() && late->first.starts_with(prefix); ++late)
        if (late->second)
            keys.push_back(late->first);
    return keys;
}

std::vector<DefaultsHead> SqliteDefaultsDomain::headsUnderLock(std::string_view prefix, std::size_t headBytes) const
{
    auto heads = perform([&](SqliteConnection& connection) {
                     return connection.dataHeads(prefix, headBytes);
                 }).value_or(std::vector<DefaultsHead>{});
    if (!m_late.empty())
        std::erase_if(heads, [&](const DefaultsHead& head) { return m_late.contains(head.key); });
    for (auto late = m_late.lower_bound(prefix); late != m_late.end() && late->first.starts_with(prefix); ++late)
        if (const auto* data = late->second ? std::get_if<DefaultsData>(&*late->second) : nullptr)
            heads.push_back({ late->first, data->bytes.substr(0, headBytes), static_cast<std::int64_t>(data->bytes.size()) });
    return heads;
}

}  // namespace quillet
