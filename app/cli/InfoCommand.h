// `quillet info`: prints how long a file is and what it is made of, exactly as the player opens it. The stem separation's
// backend reads the JSON, so that stems are as long as the song.
// Threads: main thread.
#pragma once

#include "platform/base/FilePath.h"

#include <expected>
#include <string>

namespace quillet {

struct InfoOptions {
    FilePath input;
    bool asJson = false;
};

/// The exit status, or a sentence for the user.
[[nodiscard]] std::expected<int, std::string> showInfo(const InfoOptions& options);

}  // namespace quillet
