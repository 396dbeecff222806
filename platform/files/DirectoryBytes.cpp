#include "platform/files/DirectoryBytes.h"

#include <system_error>

namespace quillet {

std::int64_t directoryBytes(const FilePath& directory)
{
    std::int64_t bytes = 0;
    std::error_code error;
    auto entry = std::filesystem::recursive_directory_iterator(
        directory, std::filesystem::directory_options::skip_permission_denied, error);
    for (const std::filesystem::recursive_directory_iterator end; !error && entry != end; entry.increment(error)) {
        std::error_code unknown;
        if (!entry->is_symlink(unknown) && entry->is_regular_file(unknown))
            if (const auto size = entry->file_size(unknown); !unknown)
                bytes += static_cast<std::int64_t>(size);
    }
    return bytes;
}

}  // namespace quillet
