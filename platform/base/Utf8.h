// Where the characters of UTF-8 end. It converts nothing.
// Threads: callable from every thread.
#pragma once

#include <cstddef>
#include <string_view>

namespace quillet {

/// The length of the well-formed character that starts at `at` (RFC 3629: no overlong forms, no surrogates), or 0.
[[nodiscard]] std::size_t utf8Length(std::string_view bytes, std::size_t at);

}  // namespace quillet
