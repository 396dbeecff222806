#include "AppCore/FileSettings.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace quillet {
namespace {

using nlohmann::json;

bool read(const json& value, double& member)
{
    if (!value.is_number())
        return false;
    member = value.get<double>();
    return true;
}

bool read(const json& value, bool& member)
{
    if (!value.is_boolean())
        return false;
    member = value.get<bool>();
    return true;
}

bool read(const json& value, std::int64_t& member)
{
    if (value.is_number_unsigned() && value.get<std::uint64_t>() > std::uint64_t{ std::numeric_limits<std::int64_t>::max() })
        return false;
    if (value.is_number_integer()) {
        member = value.get<std::int64_t>();
        return true;
    }
    if (!value.is_number_float())
        return false;
    const double number = value.get<double>();
    constexpr double limit = 0x1p63;
    if (number != std::trunc(number) || number < -limit || number >= limit)
        return false;
    member = static_cast<std::int64_t>(number);
    return true;
}

bool read(const json& value, std::vector<double>& member)
{
    if (!value.is_array())
        return false;
    member.resize(value.size());
    return std::equal(value.begin(), value.end(), member.begin(), [](const json& from, double& to) { return read(from, to); });
}

/// Calls `use(name, member)` for each of the ten members until one answers false.
template <typename Settings, typename Use> bool everyMember(Settings& settings, Use use)
{
    return use("regionStart", settings.regionStart) && use("regionEnd", settings.regionEnd) && use("speed", settings.speed)
        && use("speedStep", settings.speedStep) && use("pitch", settings.pitch) && use("eqEnabled", settings.eqEnabled)
        && use("eqGains", settings.eqGains) && use("loopEnabled", settings.loopEnabled)
        && use("loopDelaySeconds", settings.loopDelaySeconds) && use("loopDelayMilliseconds", settings.loopDelayMilliseconds);
}

bool isFinite(const FileSettings& settings)
{
    const auto finite = [](double number) { return std::isfinite(number); };
    return finite(settings.regionStart) && finite(settings.regionEnd) && finite(settings.speed) && finite(settings.speedStep)
        && finite(settings.pitch) && std::all_of(settings.eqGains.begin(), settings.eqGains.end(), finite);
}

}  // namespace

std::optional<std::string> encodeFileSettings(const FileSettings& settings)
{
    if (!isFinite(settings))
        return std::nullopt;
    json object;
    everyMember(settings, [&](const char* name, const auto& member) {
        object[name] = member;
        return true;
    });
    return object.dump();
}

std::optional<FileSettings> decodeFileSettings(std::string_view text)
{
    const json object = json::parse(text, nullptr, false);
    if (!object.is_object())
        return std::nullopt;
    FileSettings settings;
    const bool complete = everyMember(settings, [&](const char* name, auto& member) {
        const auto value = object.find(name);
        return value != object.end() && read(*value, member);
    });
    if (!complete)
        return std::nullopt;
    return settings;
}

}  // namespace quillet
