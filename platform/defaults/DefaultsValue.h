// One value of the user's defaults domain, of any of its six types, and how numbers and booleans read as each other.
// Threads: a value, no shared state.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quillet {

/// Bytes, as opposed to text.
struct DefaultsData {
    std::string bytes;
};

using DefaultsValue = std::variant<DefaultsData, std::string, std::vector<std::string>, double, std::int64_t, bool>;

/// The number that the value is: a real as it is, an integer if a double holds it exactly, a boolean as 0 or 1.
[[nodiscard]] std::optional<double> realOf(const DefaultsValue& value);
/// The integer that the value is: an integer as it is, a real if it is integral and in range, a boolean as 0 or 1.
[[nodiscard]] std::optional<std::int64_t> integerOf(const DefaultsValue& value);
/// A boolean as it is, a number as "not 0".
[[nodiscard]] std::optional<bool> booleanOf(const DefaultsValue& value);

/// Texts one after the other, each as its length in bytes, a colon and its bytes: "5:first6:second". Any byte is allowed.
[[nodiscard]] std::string packTexts(const std::vector<std::string>& texts);
/// The texts; nothing if `packed` is not what `packTexts` makes.
[[nodiscard]] std::optional<std::vector<std::string>> unpackTexts(std::string_view packed);

}  // namespace quillet
