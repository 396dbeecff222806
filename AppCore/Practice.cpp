#include "AppCore/Practice.h"

#include "AppCore/PitchInputParser.h"
#include "AppCore/SpeedInputParser.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace quillet {
namespace {

using nlohmann::json;

constexpr std::array channelTable{
    std::pair{ ChannelMode::stereo, "stereo" }, std::pair{ ChannelMode::left, "left" },
    std::pair{ ChannelMode::right, "right" },   std::pair{ ChannelMode::mono, "mono" },
    std::pair{ ChannelMode::sides, "sides" },
};

constexpr std::array goalNames{
    std::pair{ Trainer::AtGoal::stay, "stay" },
    std::pair{ Trainer::AtGoal::stop, "stop" },
    std::pair{ Trainer::AtGoal::startOver, "startOver" },
};

template <typename Names, typename Value> const char* nameOf(const Names& names, Value value)
{
    return std::ranges::find(names, value, [](const auto& name) { return name.first; })->second;
}

json member(const json& object, const char* name)
{
    const auto found = object.find(name);
    return found != object.end() ? *found : json();
}

/// The value of that name, or `fallback`.
template <typename Names, typename Value> Value readName(const Names& names, const json& text, Value fallback)
{
    if (text.is_string())
        for (const auto& [value, name] : names)
            if (text == name)
                return value;
    return fallback;
}

double readNumber(const json& value, double fallback, double min, double max)
{
    const double number = value.is_number() ? value.get<double>() : fallback;
    return std::isfinite(number) ? std::clamp(number, min, max) : fallback;
}

std::int64_t readCount(const json& value, std::int64_t fallback, std::int64_t min, std::int64_t max)
{
    return std::llround(readNumber(value, static_cast<double>(fallback), static_cast<double>(min), static_cast<double>(max)));
}

double readSpeed(const json& value, double fallback)
{
    return readNumber(value, fallback, SpeedInputParser::min, SpeedInputParser::max);
}

json encode(const Trainer& trainer)
{
    return { { "from", trainer.fromSpeed },
             { "to", trainer.goalSpeed },
             { "step", trainer.stepSize },
             { "passes", trainer.passesPerStep },
             { "atGoal", nameOf(goalNames, trainer.atGoal) } };
}

std::optional<Trainer> decodeTrainer(const json& object)
{
    if (!object.is_object())
        return std::nullopt;
    Trainer trainer;
    trainer.fromSpeed = readSpeed(member(object, "from"), trainer.fromSpeed);
    trainer.goalSpeed = readSpeed(member(object, "to"), trainer.goalSpeed);
    trainer.stepSize = readNumber(member(object, "step"), trainer.stepSize, Trainer::minStep, Trainer::maxStep);
    trainer.passesPerStep = readCount(member(object, "passes"), trainer.passesPerStep, 1, Trainer::maxPasses);
    trainer.atGoal = readName(goalNames, member(object, "atGoal"), trainer.atGoal);
    return trainer;
}

json encode(const NamedLoop& loop)
{
    json object{ { "name", loop.name },   { "start", loop.region.start }, { "end", loop.region.end }, { "speed", loop.speed },
                 { "pitch", loop.pitch }, { "color", loop.color },        { "times", loop.times } };
    if (loop.trainer)
        object["trainer"] = encode(*loop.trainer);
    return object;
}

/// Nothing where it has no region.
std::optional<NamedLoop> decodeLoop(const json& object)
{
    constexpr double maxSeconds = 1e6;
    if (!object.is_object() || !member(object, "start").is_number() || !member(object, "end").is_number())
        return std::nullopt;
    NamedLoop loop;
    loop.region = { readNumber(member(object, "start"), 0, 0, maxSeconds),
                    readNumber(member(object, "end"), 0, 0, maxSeconds) };
    if (loop.region.isEmpty())
        return std::nullopt;
    const json name = member(object, "name");
    loop.name = loopName(name.is_string() ? name.get<std::string>() : std::string());
    loop.speed = readSpeed(member(object, "speed"), loop.speed);
    loop.pitch = readNumber(member(object, "pitch"), loop.pitch, PitchInputParser::min, PitchInputParser::max);
    loop.trainer = decodeTrainer(member(object, "trainer"));
    loop.color = static_cast<int>(readCount(member(object, "color"), 0, 0, NamedLoop::colorCount - 1));
    loop.times = readCount(member(object, "times"), loop.times, 1, NamedLoop::maxTimes);
    return loop;
}

}  // namespace

std::optional<ChannelMode> channelsNamed(std::string_view name)
{
    for (const auto& [mode, text] : channelTable)
        if (name == text)
            return mode;
    return std::nullopt;
}

std::vector<std::string> channelNames()
{
    std::vector<std::string> names;
    for (const auto& [mode, text] : channelTable)
        names.emplace_back(text);
    return names;
}

std::string loopName(std::string_view text)
{
    const std::string valid = json(std::string(text)).dump(-1, ' ', false, json::error_handler_t::replace);
    const std::string whole = json::parse(valid).get<std::string>();
    std::string name;
    std::size_t length = 0;
    for (const char c : whole) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isControl = byte < 0x20 || byte == 0x7F;
        const bool startsCharacter = (byte & 0xC0) != 0x80;
        if (startsCharacter && ++length > NamedLoop::maxNameLength)
            break;
        if (isControl || c == ' ') {
            // Lines become one, and several blanks too.
            if (!name.empty() && name.back() != ' ')
                name += ' ';
        } else {
            name += c;
        }
    }
    while (!name.empty() && name.back() == ' ')
        name.pop_back();
    return name;
}

std::string encodePractice(const Practice& practice)
{
    json object{ { "channels", nameOf(channelTable, practice.channels) }, { "trainer", encode(practice.trainer) } };
    json loops = json::array();
    for (const NamedLoop& loop : practice.loops)
        loops.push_back(encode(loop));
    object["loops"] = std::move(loops);
    return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::optional<Practice> decodePractice(std::string_view text)
{
    const json object = json::parse(text, nullptr, false);
    if (!object.is_object())
        return std::nullopt;
    Practice practice;
    practice.channels = readName(channelTable, member(object, "channels"), practice.channels);
    practice.trainer = decodeTrainer(member(object, "trainer")).value_or(practice.trainer);
    const auto loops = object.find("loops");
    if (loops != object.end() && loops->is_array())
        for (const json& each : *loops)
            if (const auto loop = decodeLoop(each); loop && practice.loops.size() < Practice::maxLoops)
                practice.loops.push_back(*loop);
    return practice;
}

}  // namespace quillet
