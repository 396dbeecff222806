// What a file says of its song, made fit to be shown: text is UTF-8 in one line, however the file has it. It reads no files.
// Threads: values, no shared state; functions callable from every thread.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace quillet {

struct SongTags {
    /// The longest text that is kept, in characters.
    static constexpr std::size_t maxCharacters = 200;

    // Empty where the file says nothing.
    std::string title;
    std::string artist;
    std::string album;
    /// The bytes of a picture that `pictureExtension` knows; null where there is none.
    std::shared_ptr<const std::string> cover;

    bool operator==(const SongTags&) const = default;
};

/// `raw`, up to its first NUL, as a text to show. What is no UTF-8 is read as Windows' Western characters; control characters
/// become spaces, those that turn the direction of writing are left out, and so is what exceeds the longest text.
[[nodiscard]] std::string tagText(std::string_view raw);

/// The end of the name that a file with these bytes is to have, such as ".jpg"; empty if they begin like no picture that
/// desktops show.
[[nodiscard]] std::string_view pictureExtension(std::string_view bytes);

}  // namespace quillet
