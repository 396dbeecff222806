#include "AppCore/Base64.h"

#include <array>
#include <cstdint>

namespace quillet {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint32_t noDigit = 64;

constexpr std::array<std::uint8_t, 256> digits = [] {
    std::array<std::uint8_t, 256> table{};
    table.fill(noDigit);
    for (std::size_t i = 0; i < alphabet.size(); ++i)
        table[static_cast<unsigned char>(alphabet[i])] = static_cast<std::uint8_t>(i);
    return table;
}();

std::uint32_t byteAt(std::string_view bytes, std::size_t index)
{
    return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0U;
}

}  // namespace

std::string encodeBase64(std::string_view bytes)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::uint32_t group = byteAt(bytes, i) << 16 | byteAt(bytes, i + 1) << 8 | byteAt(bytes, i + 2);
        for (const unsigned shift : { 18U, 12U, 6U, 0U })
            text += alphabet[group >> shift & 63];
    }
    const std::size_t missing = (3 - bytes.size() % 3) % 3;
    return text.replace(text.size() - missing, missing, missing, '=');
}

std::optional<std::string> decodeBase64(std::string_view text)
{
    if (text.size() % 4 != 0)
        return std::nullopt;
    std::size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=')
        ++padding;
    const std::size_t digitCount = text.size() - padding;
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < digitCount; i += 4) {
        std::uint32_t group = 0;
        for (std::size_t j = i; j < i + 4; ++j) {
            const std::uint32_t digit = j < digitCount ? digits[static_cast<unsigned char>(text[j])] : 0U;
            if (digit == noDigit)
                return std::nullopt;
            group = group << 6 | digit;
        }
        for (const unsigned shift : { 16U, 8U, 0U })
            bytes += static_cast<char>(group >> shift & 0xFF);
    }
    // The bits that the padding leaves unused are zero in what an encoder writes.
    for (std::size_t i = 0; i < padding; ++i) {
        if (bytes.back() != '\0')
            return std::nullopt;
        bytes.pop_back();
    }
    return bytes;
}

}  // namespace quillet
