#include "app/core/SupportedAudio.h"

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

}  // namespace quillet
