#include "platform/files/SystemFileAttributes.h"

#include <sys/stat.h>

#include <ctime>

namespace quillet {
namespace {

/// 2001-01-01 00:00:00 UTC on the system's clock.
constexpr std::time_t dateEpoch = 978'307'200;

double dateOf(const timespec& time)
{
    return static_cast<double>(time.tv_sec - dateEpoch) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace

std::optional<FileAttributes> SystemFileAttributes::attributes(const FilePath& path) const
{
    struct stat status{};
    if (::stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return FileAttributes{ status.st_size, dateOf(status.st_mtim) };
}

double currentDate()
{
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return dateOf(now);
}

}  // namespace quillet
