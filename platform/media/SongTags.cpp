#include "platform/media/SongTags.h"

#include "platform/base/Utf8.h"

#include <array>
#include <cstdint>
#include <vector>

namespace quillet {
namespace {

constexpr char32_t replacement = 0xFFFD;
constexpr char32_t ellipsis = 0x2026;

/// The bytes 0x80 to 0x9F of Windows-1252; all others are the characters of their number.
constexpr std::array<char32_t, 32> windowsCharacters{
    0x20AC, replacement, 0x201A,      0x0192, 0x201E,      0x2026,      0x2020, 0x2021,      0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152,      replacement, 0x017D, replacement, replacement, 0x2018, 0x2019,      0x201C, 0x201D, 0x2022,
    0x2013, 0x2014,      0x02DC,      0x2122, 0x0161,      0x203A,      0x0153, replacement, 0x017E, 0x0178,
};

std::vector<char32_t> fromWindows(std::string_view bytes)
{
    std::vector<char32_t> characters;
    for (const char letter : bytes) {
        const auto byte = static_cast<std::uint8_t>(letter);
        characters.push_back(byte >= 0x80 && byte < 0xA0 ? windowsCharacters.at(byte - 0x80U) : char32_t{ byte });
    }
    return characters;
}

char32_t characterAt(std::string_view bytes, std::size_t at, std::size_t length)
{
    const auto byte = [&](std::size_t index) { return static_cast<std::uint8_t>(bytes[at + index]); };
    if (length == 1)
        return byte(0);
    char32_t character = byte(0) & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i)
        character = character << 6U | (byte(i) & 0x3FU);
    return character;
}

/// A field of fixed length may have cut a character in two: what is left of it at the end is dropped, if there were whole ones
/// before. Otherwise a single byte that does not fit shows that none of it was meant as UTF-8.
std::vector<char32_t> decoded(std::string_view bytes)
{
    constexpr std::size_t longestRest = 3;
    std::vector<char32_t> characters;
    bool hasLongOnes = false;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = utf8Length(bytes, at);
        if (length == 0)
            return hasLongOnes && bytes.size() - at <= longestRest ? characters : fromWindows(bytes);
        characters.push_back(characterAt(bytes, at, length));
        hasLongOnes = hasLongOnes || length > 1;
        at += length;
    }
    return characters;
}

bool isBlank(char32_t character)
{
    return character <= 0x20 || (character >= 0x7F && character <= 0xA0) || character == 0x2028 || character == 0x2029;
}

/// Marks that turn the direction of what follows them, and the mark of the byte order.
bool isInvisible(char32_t character)
{
    return character == 0x200E || character == 0x200F || (character >= 0x202A && character <= 0x202E)
        || (character >= 0x2066 && character <= 0x2069) || character == 0xFEFF;
}

/// Without blanks at the ends, and with one where there are several.
std::vector<char32_t> inOneLine(const std::vector<char32_t>& characters)
{
    std::vector<char32_t> line;
    bool isAfterBlank = false;
    for (const char32_t character : characters) {
        if (isInvisible(character))
            continue;
        if (isBlank(character)) {
            isAfterBlank = !line.empty();
            continue;
        }
        if (isAfterBlank)
            line.push_back(U' ');
        isAfterBlank = false;
        line.push_back(character);
    }
    return line;
}

std::string encoded(const std::vector<char32_t>& characters)
{
    std::string text;
    const auto add = [&text](char32_t byte) { text += static_cast<char>(byte); };
    const auto addRest = [&add](char32_t character, unsigned shift) { add(0x80U | (character >> shift & 0x3FU)); };
    for (const char32_t character : characters) {
        if (character < 0x80) {
            add(character);
        } else if (character < 0x800) {
            add(0xC0U | character >> 6U);
            addRest(character, 0);
        } else if (character < 0x10000) {
            add(0xE0U | character >> 12U);
            addRest(character, 6);
            addRest(character, 0);
        } else {
            add(0xF0U | character >> 18U);
            addRest(character, 12);
            addRest(character, 6);
            addRest(character, 0);
        }
    }
    return text;
}

}  // namespace

std::string tagText(std::string_view raw)
{
    // Whoever made the file may have put a book there: what is looked at is bounded before it is converted.
    constexpr std::size_t mostBytes = 16 * SongTags::maxCharacters;
    raw = raw.substr(0, raw.find('\0'));
    std::vector<char32_t> line = inOneLine(decoded(raw.substr(0, mostBytes)));
    if (line.size() > SongTags::maxCharacters) {
        line.resize(SongTags::maxCharacters - 1);
        line.push_back(ellipsis);
    }
    return encoded(line);
}

std::string_view pictureExtension(std::string_view bytes)
{
    if (bytes.starts_with("\xFF\xD8\xFF"))
        return ".jpg";
    if (bytes.starts_with("\x89PNG\r\n\x1A\n"))
        return ".png";
    if (bytes.starts_with("GIF8"))
        return ".gif";
    if (bytes.starts_with("RIFF") && bytes.substr(0, 12).ends_with("WEBP"))
        return ".webp";
    return "";
}

}  // namespace quillet
