// FileAttributesReader on the system's files; and the present time on the same scale.
// Threads: as FileAttributesReader says.
#pragma once

#include "platform/files/FileAttributes.h"

namespace quillet {

class SystemFileAttributes final : public FileAttributesReader {
public:
    [[nodiscard]] std::optional<FileAttributes> attributes(const FilePath& path) const override;
};

/// Seconds since 2001-01-01 00:00:00 UTC. The clock may be set, so it can go back.
[[nodiscard]] double currentDate();

}  // namespace quillet
