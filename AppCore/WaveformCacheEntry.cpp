#include "AppCore/WaveformCacheEntry.h"

#include "AppCore/Base64.h"

#include <nlohmann/json.hpp>

#include <bit>
#include <charconv>
#include <cmath>
#include <utility>

namespace quillet {
namespace {

using nlohmann::json;

// In the order in which they are written, which is that of their names.
constexpr std::string_view fileSizeName = "fileSize";
constexpr std::string_view lastAccessedName = "lastAccessed";
constexpr std::string_view modDateName = "modDate";
constexpr std::string_view samplesDataName = "samplesData";

/// The member's value; null if it is missing.
const json& member(const json& object, std::string_view name)
{
    static const json missing;
    const auto found = object.find(name);
    return found != object.end() ? *found : missing;
}

std::optional<std::int64_t> integerOf(const json& value)
{
    if (value.is_number_unsigned())
        return std::in_range<std::int64_t>(value.get<std::uint64_t>()) ? std::optional(value.get<std::int64_t>())
                                                                       : std::nullopt;
    return value.is_number_integer() ? std::optional(value.get<std::int64_t>()) : std::nullopt;
}

/// Takes `text` off the front of `rest` if it is there.
bool skip(std::string_view& rest, std::string_view text)
{
    if (!rest.starts_with(text))
        return false;
    rest.remove_prefix(text.size());
    return true;
}

bool skipName(std::string_view& rest, char before, std::string_view name)
{
    return skip(rest, { &before, 1 }) && skip(rest, "\"") && skip(rest, name) && skip(rest, "\":");
}

/// Takes a number off the front of `rest`; "nan" and "inf" are none in JSON.
template <typename Number> std::optional<Number> takeNumber(std::string_view& rest)
{
    Number number{};
    const auto [end, failure] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    if (failure != std::errc() || !std::isfinite(static_cast<double>(number)))
        return std::nullopt;
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    return number;
}

}  // namespace

std::optional<std::string> encodeWaveformCacheEntry(const WaveformCacheEntry& entry)
{
    if (!std::isfinite(entry.modDate) || !std::isfinite(entry.lastAccessed))
        return std::nullopt;
    const json object{ { fileSizeName, entry.fileSize },
                       { lastAccessedName, entry.lastAccessed },
                       { modDateName, entry.modDate },
                       { samplesDataName, encodeBase64(entry.samplesData) } };
    return object.dump();
}

std::optional<WaveformCacheEntry> decodeWaveformCacheEntry(std::string_view text)
{
    const json object = json::parse(text, nullptr, false);
    if (!object.is_object())
        return std::nullopt;
    const json& samplesData = member(object, samplesDataName);
    const auto fileSize = integerOf(member(object, fileSizeName));
    const json& modDate = member(object, modDateName);
    const json& lastAccessed = member(object, lastAccessedName);
    if (!samplesData.is_string() || !fileSize || !modDate.is_number() || !lastAccessed.is_number())
        return std::nullopt;
    auto bytes = decodeBase64(samplesData.get_ref<const std::string&>());
    if (!bytes)
        return std::nullopt;
    return WaveformCacheEntry{ std::move(*bytes), *fileSize, modDate.get<double>(), lastAccessed.get<double>() };
}

std::optional<double> lastAccessedOfRecord(std::string_view head, std::int64_t byteCount)
{
    std::string_view rest = head;
    if (!skipName(rest, '{', fileSizeName) || !takeNumber<std::int64_t>(rest) || !skipName(rest, ',', lastAccessedName))
        return std::nullopt;
    const auto lastAccessed = takeNumber<double>(rest);
    if (!lastAccessed || !skipName(rest, ',', modDateName) || !takeNumber<double>(rest) || !skipName(rest, ',', samplesDataName)
        || !skip(rest, "\""))
        return std::nullopt;
    constexpr std::string_view tail = "\"}";
    const std::int64_t digits = byteCount - static_cast<std::int64_t>(head.size() - rest.size() + tail.size());
    return digits >= 0 && digits % 4 == 0 ? lastAccessed : std::nullopt;
}

std::string dataOfPeaks(std::span<const float> peaks)
{
    std::string data;
    data.reserve(4 * peaks.size());
    for (const float peak : peaks)
        for (const unsigned shift : { 0U, 8U, 16U, 24U })
            data += static_cast<char>(std::bit_cast<std::uint32_t>(peak) >> shift & 0xFF);
    return data;
}

std::vector<float> peaksOfData(std::string_view data)
{
    std::vector<float> peaks;
    peaks.reserve(data.size() / 4);
    for (std::size_t i = 0; i + 4 <= data.size(); i += 4) {
        std::uint32_t bits = 0;
        for (std::size_t j = 0; j < 4; ++j)
            bits |= std::uint32_t{ static_cast<unsigned char>(data[i + j]) } << 8 * j;
        peaks.push_back(std::bit_cast<float>(bits));
    }
    return peaks;
}

}  // namespace quillet
