// Numbers as the user types them and as fields show them. The syntax is that of the C locale, whatever locale the process
// runs in: a person who writes 7,5 is told no instead of being given 7. It knows no units and no limits.
// Threads: callable from every thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quillet {

/// The text without the spaces and tabs at its two ends.
[[nodiscard]] std::string_view trimmed(std::string_view text);

/// Reads `text` as a whole: optional sign, decimal digits with an optional point, optional exponent; or inf, infinity, nan
/// in any case of letters. Blanks and hexadecimal digits make no number. Beyond the range of a double it is infinite, or 0.
[[nodiscard]] std::optional<double> readNumber(std::string_view text);

/// What "+number" or "-number" asks for: that much above or below `anchor`, in its unit. The number may have a sign of its
/// own. Nothing for any other text.
[[nodiscard]] std::optional<double> readRelativeNumber(std::string_view text, double anchor);

/// The value within the bounds; one that is not a number becomes `max`.
[[nodiscard]] double bounded(double value, double min, double max);

/// The value without its fraction. It is finite and fits the result (REQUIRE).
[[nodiscard]] std::int64_t integerPart(double value);

}  // namespace quillet
