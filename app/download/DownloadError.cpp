#include "app/download/DownloadError.h"

namespace quillet {

std::string DownloadError::description() const
{
    switch (kind) {
    case Kind::processFailed:
        return message.empty() ? "Download failed (exit code " + std::to_string(exitCode) + ")."
                               : "Download failed: " + message;
    case Kind::uvNotFound:
        return "uv not found inside the app bundle.";
    case Kind::ytDlpNotFound:
        return "yt-dlp not found inside the app bundle.";
    case Kind::ffmpegNotFound:
        return "ffmpeg not found inside the app bundle.";
    case Kind::noOutputFile:
        return "Download succeeded but no output file path was reported.";
    case Kind::launchFailed:
        break;
    }
    return message;
}

}  // namespace quillet
