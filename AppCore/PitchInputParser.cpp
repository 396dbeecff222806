#include "AppCore/PitchInputParser.h"

#include "AppCore/TypedNumber.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace quillet {
namespace {

constexpr double centsPerSemitone = 100;
constexpr double centsPerOctave = 1200;

std::string lowered(std::string_view text)
{
    std::string small(text);
    std::ranges::transform(small, small.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return small;
}

bool takeEnd(std::string_view& text, std::string_view end)
{
    if (!text.ends_with(end))
        return false;
    text = trimmed(text.substr(0, text.size() - end.size()));
    return true;
}

/// How a song whose A is at the frequency after "a=" gets to concert pitch, cents.
std::optional<double> readTuning(std::string_view text)
{
    if (!text.starts_with('a'))
        return std::nullopt;
    text = trimmed(text.substr(1));
    if (!text.starts_with('='))
        return std::nullopt;
    text = trimmed(text.substr(1));
    takeEnd(text, "hz");
    const auto hertz = readNumber(text);
    if (!hertz || !(*hertz > 0) || std::isinf(*hertz))
        return std::nullopt;
    return centsPerOctave * std::log2(PitchInputParser::concertPitchHz / *hertz);
}

std::string withTenths(double value)
{
    const auto tenths = static_cast<std::int64_t>(std::llround(value * 10));
    return std::to_string(tenths / 10) + (tenths % 10 == 0 ? "" : '.' + std::to_string(tenths % 10));
}

}  // namespace

std::optional<double> PitchInputParser::parse(std::string_view text, double anchorCents)
{
    const std::string small = lowered(trimmed(text));
    std::string_view entry = small;
    if (const auto tuning = readTuning(entry))
        return bounded(*tuning, min, max);
    double unit = 1;
    if (takeEnd(entry, "st"))
        unit = centsPerSemitone;
    else
        takeEnd(entry, "ct");
    std::optional<double> number = readRelativeNumber(entry, anchorCents / unit);
    if (!number)
        number = readNumber(entry);
    if (!number)
        return std::nullopt;
    return bounded(*number * unit, min, max);
}

std::string PitchInputParser::format(double cents)
{
    const std::int64_t whole = integerPart(cents);
    return (whole < 1 ? "" : "+") + std::to_string(whole);
}

std::string PitchInputParser::describe(double cents)
{
    const auto tenths = static_cast<double>(integerPart(std::abs(cents) * 10 + 0.5));
    if (tenths == 0)
        return {};
    const auto semitones = static_cast<std::int64_t>(tenths / 10 / centsPerSemitone);
    const double rest = tenths / 10 - static_cast<double>(semitones) * centsPerSemitone;
    std::string text = cents < 0 ? "-" : "+";
    if (semitones != 0)
        text += std::to_string(semitones) + " st";
    if (rest > 0)
        text += (semitones != 0 ? " " : "") + withTenths(rest) + " ct";
    return text;
}

}  // namespace quillet
