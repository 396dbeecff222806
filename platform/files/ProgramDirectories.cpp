#include "platform/files/ProgramDirectories.h"

#include <system_error>

namespace quillet {

FilePath executableDirectory()
{
    std::error_code unknown;
    const FilePath executable = std::filesystem::read_symlink("/proc/self/exe", unknown);
    return unknown ? FilePath() : executable.parent_path();
}

FilePath resourcesDirectory()
{
    const FilePath executables = executableDirectory();
    return executables.empty() ? FilePath() : executables.parent_path().parent_path() / "share" / "quillet";
}

}  // namespace quillet
