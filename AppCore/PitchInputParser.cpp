#include "AppCore/PitchInputParser.h"

#include "AppCore/TypedNumber.h"

#include <cstdint>

namespace quillet {

std::optional<double> PitchInputParser::parse(std::string_view text, double anchorCents)
{
    const std::string_view entry = trimmed(text);
    std::optional<double> pitchCents = readRelativeNumber(entry, anchorCents);
    if (!pitchCents)
        pitchCents = readNumber(entry);
    if (!pitchCents)
        return std::nullopt;
    return bounded(*pitchCents, min, max);
}

std::string PitchInputParser::format(double cents)
{
    const std::int64_t whole = integerPart(cents);
    return (whole < 1 ? "" : "+") + std::to_string(whole);
}

}  // namespace quillet
