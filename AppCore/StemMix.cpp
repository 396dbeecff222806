#include "AppCore/StemMix.h"

#include <algorithm>

namespace quillet {

StemMix::Channel StemMix::channel(std::string_view key) const
{
    const auto found = channels.find(key);
    return found != channels.end() ? found->second : Channel{};
}

bool StemMix::isAnySoloed() const
{
    return std::ranges::any_of(channels, [](const auto& channel) { return channel.second.isSoloed; });
}

}  // namespace quillet
