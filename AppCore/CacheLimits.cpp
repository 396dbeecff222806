#include "AppCore/CacheLimits.h"

#include <charconv>
#include <limits>

namespace quillet {

std::optional<std::int64_t> customLimit(std::string_view text)
{
    constexpr std::string_view blanks = " \t";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return std::nullopt;
    text = text.substr(first, text.find_last_not_of(blanks) - first + 1);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    if (!isWhole || number < 1 || number > std::numeric_limits<std::int64_t>::max() / bytesPerMB)
        return std::nullopt;
    return number;
}

}  // namespace quillet
