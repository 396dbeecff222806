#include "platform/defaults/DefaultsValue.h"

#include <charconv>
#include <cmath>

namespace quillet {
namespace {

bool fitsInteger(double real) { return real >= -0x1p63 && real < 0x1p63 && real == std::trunc(real); }

}  // namespace

std::optional<double> realOf(const DefaultsValue& value)
{
    if (const auto* boolean = std::get_if<bool>(&value))
        return *boolean ? 1 : 0;
    if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        const auto real = static_cast<double>(*integer);
        return fitsInteger(real) && static_cast<std::int64_t>(real) == *integer ? std::optional(real) : std::nullopt;
    }
    const auto* real = std::get_if<double>(&value);
    return real != nullptr ? std::optional(*real) : std::nullopt;
}

std::optional<std::int64_t> integerOf(const DefaultsValue& value)
{
    if (const auto* boolean = std::get_if<bool>(&value))
        return *boolean ? 1 : 0;
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        return *integer;
    const auto* real = std::get_if<double>(&value);
    return real != nullptr && fitsInteger(*real) ? std::optional(static_cast<std::int64_t>(*real)) : std::nullopt;
}

std::optional<bool> booleanOf(const DefaultsValue& value)
{
    if (const auto* boolean = std::get_if<bool>(&value))
        return *boolean;
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        return *integer != 0;
    const auto* real = std::get_if<double>(&value);
    return real != nullptr ? std::optional(*real != 0) : std::nullopt;
}

std::string packTexts(const std::vector<std::string>& texts)
{
    std::string packed;
    for (const std::string& text : texts)
        packed += std::to_string(text.size()) + ':' + text;
    return packed;
}

std::optional<std::vector<std::string>> unpackTexts(std::string_view packed)
{
    std::vector<std::string> texts;
    while (!packed.empty()) {
        std::size_t length = 0;
        const auto [end, error] = std::from_chars(packed.data(), packed.data() + packed.size(), length);
        packed.remove_prefix(static_cast<std::size_t>(end - packed.data()));
        if (error != std::errc() || !packed.starts_with(':') || packed.size() - 1 < length)
            return std::nullopt;
        texts.emplace_back(packed.substr(1, length));
        packed.remove_prefix(1 + length);
    }
    return texts;
}

}  // namespace quillet
