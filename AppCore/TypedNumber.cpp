#include "AppCore/TypedNumber.h"

#include "platform/base/Require.h"

// newlocale and strtod_l, which POSIX adds, come with these.
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <string>

namespace quillet {

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

std::optional<double> readNumber(std::string_view text)
{
    // What strtod would take beyond decimal numbers: leading blanks, hexadecimal digits, a NaN's payload.
    constexpr std::string_view neverInNumbers = " \t\n\v\f\rxX(";
    if (text.empty() || text.find_first_of(neverInNumbers) != std::string_view::npos)
        return std::nullopt;
    static const locale_t cLocale = ::newlocale(LC_ALL_MASK, "C", nullptr);
    REQUIRE(cLocale != nullptr);
    const std::string terminated(text);
    char* end = nullptr;
    const double number = ::strtod_l(terminated.c_str(), &end, cLocale);
    if (end != terminated.c_str() + terminated.size())
        return std::nullopt;
    return number;
}

std::optional<double> readRelativeNumber(std::string_view text, double anchor)
{
    if (!text.starts_with('+') && !text.starts_with('-'))
        return std::nullopt;
    const std::optional<double> step = readNumber(text.substr(1));
    if (!step)
        return std::nullopt;
    return text.front() == '+' ? anchor + *step : anchor - *step;
}

double bounded(double value, double min, double max) { return std::fmax(min, std::fmin(value, max)); }

std::int64_t integerPart(double value)
{
    REQUIRE(value >= -0x1p63 && value < 0x1p63);
    return static_cast<std::int64_t>(value);
}

}  // namespace quillet
