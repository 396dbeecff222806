#include "AppCore/StemSessionStore.h"

#include "AppCore/SharedInstance.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillet {
namespace {

using nlohmann::json;
/// The stored form of a stem has the same three members.
using PersistedStem = StemSession::Stem;

constexpr std::string_view keyPrefix = "stemSession.";

std::string keyOf(const FilePath& track) { return std::string(keyPrefix) + track.native(); }

bool isUtf8(const std::string& bytes)
{
    const json text = bytes;
    return json::parse(text.dump(-1, ' ', false, json::error_handler_t::ignore)) == text;
}

json encodePath(const FilePath& path)
{
    const std::string& bytes = path.native();
    return isUtf8(bytes) ? json(bytes) : json(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

std::optional<FilePath> decodePath(const json& value)
{
    if (value.is_string())
        return FilePath(value.get<std::string>());
    const auto isByte = [](const json& element) {
        return element.is_number_unsigned() && element.get<std::uint64_t>() <= 0xFF;
    };
    if (!value.is_array() || !std::all_of(value.begin(), value.end(), isByte))
        return std::nullopt;
    const auto bytes = value.get<std::vector<std::uint8_t>>();
    return FilePath(std::string(bytes.begin(), bytes.end()));
}

std::optional<std::string> encode(const std::vector<PersistedStem>& stems)
{
    json array = json::array();
    for (const PersistedStem& stem : stems) {
        if (!isUtf8(stem.key))
            return std::nullopt;
        array.push_back({ { "key", stem.key }, { "filePath", encodePath(stem.fileURL) }, { "isMuted", stem.isMuted } });
    }
    return array.dump();
}

std::optional<PersistedStem> decodeStem(const json& object)
{
    const auto member = [&](const char* name) { return object.is_object() && object.contains(name) ? object[name] : json(); };
    const json key = member("key");
    const json isMuted = member("isMuted");
    std::optional<FilePath> file = decodePath(member("filePath"));
    if (!key.is_string() || !isMuted.is_boolean() || !file)
        return std::nullopt;
    return PersistedStem{ key.get<std::string>(), *std::move(file), isMuted.get<bool>() };
}

std::optional<std::vector<PersistedStem>> decode(std::string_view text)
{
    const json array = json::parse(text, nullptr, false);
    if (!array.is_array())
        return std::nullopt;
    std::vector<PersistedStem> stems;
    for (const json& object : array) {
        std::optional<PersistedStem> stem = decodeStem(object);
        if (!stem)
            return std::nullopt;
        stems.push_back(*std::move(stem));
    }
    return stems;
}

}  // namespace

StemSessionStore& StemSessionStore::shared() { return SharedInstance<StemSessionStore>::get(); }

void StemSessionStore::save(const StemSession& session, const FilePath& track)
{
    if (const auto text = encode(session.stems))
        m_defaults.setData(keyOf(track), *text);
}

std::optional<std::vector<PersistedStem>> StemSessionStore::load(const FilePath& track) const
{
    const auto text = m_defaults.data(keyOf(track));
    return text ? decode(*text) : std::nullopt;
}

void StemSessionStore::remove(const FilePath& track) { m_defaults.remove(keyOf(track)); }

void StemSessionStore::clearAll() { m_defaults.removeAll(m_defaults.keysWithPrefix(keyPrefix)); }

}  // namespace quillet
