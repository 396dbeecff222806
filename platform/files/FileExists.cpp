#include "platform/files/FileExists.h"

#include <system_error>
#include <unistd.h>

namespace quillet {

bool fileExists(const FilePath& path)
{
    std::error_code unknown;
    return std::filesystem::exists(path, unknown);
}

bool isExecutableFile(const FilePath& path)
{
    std::error_code unknown;
    return std::filesystem::is_regular_file(path, unknown) && access(path.c_str(), X_OK) == 0;
}

}  // namespace quillet
