#include "AppCore/StemMix.h"

#include <algorithm>

namespace quillet {

StemMix::Channel StemMix::channel(std::string_view key) const
{
    const auto found = channels.find(key);
    return found != channels.end() ? found->second : Channel{};
}

bool StemMix::isHeard(const StemSession::Stem& stem, const StemSession& session) const
{
    const auto isSoloed = [this](const StemSession::Stem& other) { return channel(other.key).isSoloed; };
    return std::ranges::any_of(session.stems, isSoloed) ? isSoloed(stem) : !stem.isMuted;
}

double StemMix::heardVolume(const StemSession::Stem& stem, const StemSession& session) const
{
    return isHeard(stem, session) ? channel(stem.key).volume : 0;
}

}  // namespace quillet
