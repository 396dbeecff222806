// Why a song could not be fetched from the web, with the sentence that the user is shown.
// Threads: a value.
#pragma once

#include <string>

namespace quillet {

struct DownloadError {
    enum class Kind {
        /// The downloader ended with a status other than 0.
        processFailed,
        uvNotFound,
        ytDlpNotFound,
        ffmpegNotFound,
        noOutputFile,
        /// The system could not start it.
        launchFailed,
    };

    Kind kind;
    /// Of `processFailed`.
    int exitCode = 0;
    /// What the downloader said of it, trimmed (`processFailed`); the system's reason (`launchFailed`).
    std::string message = {};

    [[nodiscard]] std::string description() const;
};

}  // namespace quillet
