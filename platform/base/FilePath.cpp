#include "platform/base/FilePath.h"

#include "platform/base/Utf8.h"

#include <cstdint>

namespace quillet {

std::string displayText(const FilePath& path)
{
    const std::string& bytes = path.native();
    std::string text;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = utf8Length(bytes, at);
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
