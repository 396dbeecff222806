#include "AppCore/StemSession.h"

#include <algorithm>

namespace quillet {

void StemSession::setMuted(bool isMuted, std::string_view key)
{
    const auto stem = std::find_if(stems.begin(), stems.end(), [&](const Stem& candidate) { return candidate.key == key; });
    if (stem != stems.end())
        stem->isMuted = isMuted;
}

std::string StemSession::displayName(std::string_view key)
{
    constexpr char toSmall = 'a' - 'A';
    std::string name(key);
    bool atWordStart = true;
    for (char& letter : name) {
        if (!atWordStart && letter >= 'A' && letter <= 'Z')
            letter = static_cast<char>(letter + toSmall);
        else if (atWordStart && letter >= 'a' && letter <= 'z')
            letter = static_cast<char>(letter - toSmall);
        atWordStart = letter == ' ' || (letter >= '\t' && letter <= '\r');
    }
    return name;
}

}  // namespace quillet
