#include "platform/base/FilePath.h"

#include <cstdint>

namespace quillet {
namespace {

/// The length of the well-formed UTF-8 character that starts at `at` (RFC 3629: no overlong forms, no surrogates), or 0.
std::size_t characterLength(const std::string& bytes, std::size_t at)
{
    const auto byte = [&](std::size_t index) { return static_cast<std::uint8_t>(index < bytes.size() ? bytes[index] : 0); };
    const std::uint8_t lead = byte(at);
    const auto continues = [&](std::size_t count) {
        for (std::size_t i = 1; i <= count; ++i)
            if ((byte(at + i) & 0xC0) != 0x80)
                return false;
        return true;
    };
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        return continues(1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        const bool overlong = lead == 0xE0 && byte(at + 1) < 0xA0;
        const bool surrogate = lead == 0xED && byte(at + 1) > 0x9F;
        return continues(2) && !overlong && !surrogate ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const bool overlong = lead == 0xF0 && byte(at + 1) < 0x90;
        const bool beyond = lead == 0xF4 && byte(at + 1) > 0x8F;
        return continues(3) && !overlong && !beyond ? 4 : 0;
    }
    return 0;
}

}  // namespace

std::string displayText(const FilePath& path)
{
    const std::string& bytes = path.native();
    std::string text;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = characterLength(bytes, at);
        if (length == 0) {
            text += "\xEF\xBF\xBD";
            ++at;
        } else if (length == 1 && (static_cast<std::uint8_t>(bytes[at]) < 0x20 || bytes[at] == 0x7F)) {
            text += ' ';
            ++at;
        } else {
            text.append(bytes, at, length);
            at += length;
        }
    }
    return text;
}

}  // namespace quillet
