#include "AppCore/StemSession.h"

#include <algorithm>

namespace quillet {

StemSession StemSession::fromSeparation(const std::map<std::string, FilePath>& files)
{
    StemSession session;
    for (const std::string_view key : keys)
        if (const auto file = files.find(std::string(key)); file != files.end())
            session.stems.push_back({ file->first, file->second });
    return session;
}

bool StemSession::isRestorable(const std::function<bool(const FilePath&)>& exists) const
{
    return !stems.empty() && std::ranges::all_of(stems, exists, &Stem::fileURL);
}

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
