#include "platform/defaults/DefaultsFile.h"

#include "platform/files/UserDirectories.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <expected>
#include <string>
#include <system_error>
#include <utility>

namespace quillet {
namespace {

constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;

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

/// The new name. The log goes first: left where it is, it would be taken for the log of the file that comes next.
std::expected<FilePath, DatabaseError> moveAside(const FilePath& file)
{
    FilePath name = asideName(file);
    for (const char* part : { "-wal", "-shm", "" }) {
        std::error_code failure;
        std::filesystem::rename(withSuffix(file, part), withSuffix(name, part), failure);
        if (failure && failure != std::errc::no_such_file_or_directory)
            return std::unexpected(databaseErrorOf(failure.value(), file, DatabaseError::other));
    }
    return name;
}

/// Creates the file, and narrows what exists already; SQLite gives the log the mode that the file has. What refuses this
/// refuses SQLite too, which says why. No descriptor is opened: closing one would release the locks that this process's
/// connections hold.
void keepForOwner(const FilePath& file)
{
    static_cast<void>(::mknod(file.c_str(), S_IFREG | ownerOnly, 0));
    for (const char* part : { "", "-wal", "-shm" }) {
        const FilePath path = withSuffix(file, part);
        struct stat attributes{};
        if (::stat(path.c_str(), &attributes) == 0 && S_ISREG(attributes.st_mode)
            && (attributes.st_mode & 07777 & ~ownerOnly) != 0)
            static_cast<void>(::chmod(path.c_str(), attributes.st_mode & ownerOnly));
    }
}

/// Asks the system once more, for the first part of the path that is missing.
DatabaseError whyNoFolder(const FilePath& file)
{
    FilePath missing = file.parent_path();
    std::error_code unknown;
    while (missing.has_relative_path() && !std::filesystem::exists(missing.parent_path(), unknown))
        missing = missing.parent_path();
    const int error = ::mkdir(missing.c_str(), S_IRWXU) == 0 ? 0 : errno;
    return databaseErrorOf(error, file, DatabaseError::unreadable);
}

bool mayBeRead(DatabaseError error)
{
    return error == DatabaseError::readOnly || error == DatabaseError::unreadable || error == DatabaseError::full;
}

}  // namespace

OpenedDefaults openDefaultsFile(const FilePath& file, Suspicion suspicion, int busyTimeoutMilliseconds)
{
    if (!createPrivateDirectory(file.parent_path()))
        return { {}, whyNoFolder(file), {} };
    // One process at a time sets the file up, and none moves aside what another has just replaced.
    const DirectoryLock lock(file.parent_path());
    const auto open = [&] {
        keepForOwner(file);
        return SqliteConnection::open(file, busyTimeoutMilliseconds);
    };
    OpenedDefaults opened;
    auto connection = open();
    if (connection && suspicion == Suspicion::damage && !(*connection)->isSound())
        connection = std::unexpected(DatabaseError::damaged);
    if (!connection && connection.error() == DatabaseError::damaged) {
        if (auto name = moveAside(file)) {
            opened.movedAside = std::move(*name);
            connection = open();
        } else {
            connection = std::unexpected(name.error());
        }
    }
    if (connection) {
        opened.connection = std::move(*connection);
        return opened;
    }
    opened.error = connection.error() == DatabaseError::damaged ? DatabaseError::other : connection.error();
    if (mayBeRead(*opened.error))
        if (auto reader = SqliteConnection::openForReading(file))
            opened.connection = std::move(*reader);
    return opened;
}

}  // namespace quillet
