#include "platform/base/Utf8.h"

#include <cstdint>

namespace quillet {

std::size_t utf8Length(std::string_view bytes, std::size_t at)
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

}  // namespace quillet
