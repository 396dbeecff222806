#include "platform/files/NormalPath.h"

#include <system_error>

namespace quillet {

FilePath normalPath(const FilePath& path)
{
    std::error_code unknown;
    FilePath whole = std::filesystem::absolute(path, unknown);
    if (unknown)
        return path;
    FilePath normal;
    for (const FilePath& component : whole) {
        if (component == "..") {
            const FilePath folder = std::filesystem::weakly_canonical(normal, unknown);
            normal = (unknown ? normal : folder).parent_path();
        } else if (component != "." && !component.empty()) {
            normal /= component;
        }
    }
    return normal;
}

}  // namespace quillet
