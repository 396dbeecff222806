// What the file system says of a file without opening it.
// Threads: callable from every thread that may wait for a disk.
#pragma once

#include "platform/base/FilePath.h"

#include <cstdint>
#include <optional>

namespace quillet {

struct FileAttributes {
    std::int64_t sizeBytes = 0;
    /// Seconds since 2001-01-01 00:00:00 UTC, with their fraction.
    double modificationDate = 0;
};

class FileAttributesReader {
public:
    virtual ~FileAttributesReader() = default;

    /// Of what `path` leads to, links followed; nothing when it cannot be found out.
    [[nodiscard]] virtual std::optional<FileAttributes> attributes(const FilePath& path) const = 0;
};

}  // namespace quillet
