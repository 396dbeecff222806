#include "platform/files/UserDirectories.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <system_error>

namespace quillet {
namespace {

/// The absolute path that the variable holds; empty otherwise (a relative one depends on where the program was started).
FilePath absoluteFromEnvironment(const char* name)
{
    const char* value = std::getenv(name);
    const FilePath path = value != nullptr ? FilePath(value) : FilePath();
    return path.is_absolute() ? path : FilePath();
}

/// Ours in the directory that the variable names, or in that one of the home directory.
FilePath ownDirectory(const char* variable, const char* usual)
{
    const FilePath named = absoluteFromEnvironment(variable);
    return (named.empty() ? homeDirectory() / usual : named) / "quillet";
}

}  // namespace

FilePath homeDirectory()
{
    if (FilePath home = absoluteFromEnvironment("HOME"); !home.empty())
        return home;
    std::array<char, 16384> texts;
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, texts.data(), texts.size(), &found) != 0 || found == nullptr)
        return {};
    return found->pw_dir;
}

FilePath configDirectory() { return ownDirectory("XDG_CONFIG_HOME", ".config"); }

FilePath dataDirectory() { return ownDirectory("XDG_DATA_HOME", ".local/share"); }

FilePath cacheDirectory() { return ownDirectory("XDG_CACHE_HOME", ".cache"); }

bool createPrivateDirectory(const FilePath& directory)
{
    FilePath path;
    for (const FilePath& component : directory) {
        path /= component;
        // One that exists already, or that another process makes at the same time, is as good.
        ::mkdir(path.c_str(), S_IRWXU);
    }
    std::error_code unknown;
    return std::filesystem::is_directory(directory, unknown);
}

}  // namespace quillet
