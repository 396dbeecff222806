#include "app/core/SupportedAudio.h"

#include <QMimeDatabase>

#include <algorithm>
#include <string>

namespace quillet {

bool isSupportedAudio(const FilePath& file)
{
    std::string extension = file.extension().native();
    std::ranges::transform(extension, extension.begin(), [](char letter) {
        return 'A' <= letter && letter <= 'Z' ? static_cast<char>(letter + 'a' - 'A') : letter;
    });
    return extension.starts_with('.')
        && std::ranges::find(supportedAudioTypes, extension.substr(1)) != supportedAudioTypes.end();
}

bool isNoAudio(const FilePath& file)
{
    if (isSupportedAudio(file))
        return false;
    const QMimeType type =
        QMimeDatabase().mimeTypeForFile(QString::fromUtf8(file.filename().c_str()), QMimeDatabase::MatchExtension);
    constexpr std::array playlists{ "audio/x-mpegurl", "application/vnd.apple.mpegurl", "audio/x-scpls",
                                    "audio/x-ms-asx",  "application/xspf+xml",          "application/x-cue" };
    const auto inherits = [&type](const char* name) { return type.inherits(QLatin1String(name)); };
    if (std::ranges::any_of(playlists, inherits))
        return true;
    const bool isSound = type.name().startsWith(QLatin1String("audio/")) || type.name().startsWith(QLatin1String("video/"));
    return type.isValid() && !type.isDefault() && !isSound;
}

}  // namespace quillet
