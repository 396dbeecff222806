#include "AppCore/StemMixStore.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <string_view>

namespace quillet {
namespace {

using nlohmann::json;

constexpr std::string_view keyPrefix = "stemMix.";

std::string keyOf(const FilePath& track) { return std::string(keyPrefix) + track.native(); }

}  // namespace

void StemMixStore::save(const StemMix& mix, const FilePath& track)
{
    json record = json::object();
    for (const auto& [key, channel] : mix.channels)
        if (channel != StemMix::Channel{})
            record[key] = { { "volume", channel.volume }, { "soloed", channel.isSoloed } };
    if (record.empty())
        remove(track);
    else
        m_defaults.setData(keyOf(track), record.dump(-1, ' ', false, json::error_handler_t::replace));
}

StemMix StemMixStore::load(const FilePath& track) const
{
    StemMix mix;
    const auto text = m_defaults.data(keyOf(track));
    const json record = text ? json::parse(*text, nullptr, false) : json();
    if (!record.is_object())
        return mix;
    for (const auto& [key, stem] : record.items()) {
        const auto volume = stem.is_object() ? stem.find("volume") : stem.end();
        const auto soloed = stem.is_object() ? stem.find("soloed") : stem.end();
        if (volume == stem.end() || soloed == stem.end() || !volume->is_number() || !soloed->is_boolean())
            continue;
        mix.channels[key] = { std::clamp(volume->get<double>(), 0.0, StemMix::maxVolume), soloed->get<bool>() };
    }
    return mix;
}

void StemMixStore::remove(const FilePath& track) { m_defaults.remove(keyOf(track)); }

void StemMixStore::clearAll() { m_defaults.removeAll(m_defaults.keysWithPrefix(keyPrefix)); }

}  // namespace quillet
