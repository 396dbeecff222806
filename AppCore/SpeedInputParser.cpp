#include "AppCore/SpeedInputParser.h"

#include "AppCore/TypedNumber.h"

#include <string>

namespace quillet {

std::optional<double> SpeedInputParser::parse(std::string_view text, double anchorPercent)
{
    std::string entry(trimmed(text));
    std::optional<double> speedPercent = readRelativeNumber(entry, anchorPercent);
    if (!speedPercent) {
        std::erase(entry, '%');
        speedPercent = readNumber(entry);
    }
    if (!speedPercent)
        return std::nullopt;
    return bounded(*speedPercent, min, max);
}

}  // namespace quillet
