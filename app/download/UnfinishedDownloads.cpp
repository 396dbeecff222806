#include "app/download/UnfinishedDownloads.h"

#include <QCryptographicHash>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>

namespace quillet {
namespace {

using Clock = std::chrono::system_clock;

constexpr std::string_view namePrefix = ".quillet-";
constexpr std::string_view hexDigits = "0123456789abcdef";
constexpr qsizetype nameDigits = 12;
/// How often and how long a folder whose download is coming to its end is waited for.
constexpr int claimAttempts = 20;
constexpr std::chrono::milliseconds claimInterval{ 50 };

bool isName(std::string_view name)
{
    if (!name.starts_with(namePrefix))
        return false;
    name.remove_prefix(namePrefix.size());
    return name.size() == nameDigits && name.find_first_not_of(hexDigits) == std::string_view::npos;
}

/// A real folder of the user's own that nobody else uses, for as long as this lives.
class Claim {
public:
    explicit Claim(const FilePath& folder)
        : m_descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC))
    {
        if (m_descriptor < 0)
            return;
        // Not every file system can lock: nobody has claimed anything there.
        m_isInUse = ::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
        struct stat opened{};
        struct stat named{};
        // Whoever had it may have removed it meanwhile, and another download have made it again.
        m_isOurs = !m_isInUse && ::fstat(m_descriptor, &opened) == 0 && ::lstat(folder.c_str(), &named) == 0
            && opened.st_dev == named.st_dev && opened.st_ino == named.st_ino && opened.st_uid == ::geteuid();
    }
    ~Claim()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;

    [[nodiscard]] bool isInUse() const { return m_isInUse; }
    /// It may be removed.
    [[nodiscard]] bool isOurs() const { return m_isOurs; }

private:
    int m_descriptor;
    bool m_isInUse = false;
    bool m_isOurs = false;
};

std::optional<Clock::time_point> modification(const FilePath& path)
{
    struct stat attributes{};
    if (::lstat(path.c_str(), &attributes) != 0)
        return std::nullopt;
    return Clock::from_time_t(attributes.st_mtim.tv_sec);
}

/// Of the folder or anything in it; nothing where that cannot be found out.
std::optional<Clock::time_point> newestModification(const FilePath& folder)
{
    auto newest = modification(folder);
    std::error_code failure;
    std::filesystem::recursive_directory_iterator entry(folder, failure);
    for (; !failure && newest && entry != std::filesystem::recursive_directory_iterator(); entry.increment(failure)) {
        const auto its = modification(entry->path());
        newest = its ? std::max(newest, its) : std::nullopt;
    }
    return failure ? std::nullopt : newest;
}

void removeFolder(const FilePath& folder)
{
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

}  // namespace

void UnfinishedDownloads::discard(const WebAddress& address) const
{
    const auto hash = QCryptographicHash::hash(QByteArray::fromStdString(address.absoluteText()), QCryptographicHash::Sha256);
    const FilePath folder = m_folder / (std::string(namePrefix) + hash.toHex().left(nameDigits).toStdString());
    for (int attempt = 0; attempt < claimAttempts; ++attempt) {
        const Claim claim(folder);
        if (claim.isOurs())
            removeFolder(folder);
        if (!claim.isInUse())
            return;
        std::this_thread::sleep_for(claimInterval);
    }
}

void UnfinishedDownloads::sweep(Clock::time_point now) const
{
    std::error_code failure;
    std::filesystem::directory_iterator entry(m_folder, failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        const FilePath& folder = entry->path();
        if (!isName(folder.filename().native()))
            continue;
        const Claim claim(folder);
        if (!claim.isOurs())
            continue;
        if (const auto newest = newestModification(folder); newest && now - *newest > keptFor)
            removeFolder(folder);
    }
}

}  // namespace quillet
