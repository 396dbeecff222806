#include "platform/files/FileExists.h"

#include <system_error>

namespace quillet {

bool fileExists(const FilePath& path)
{
    std::error_code unknown;
    return std::filesystem::exists(path, unknown);
}

}  // namespace quillet
