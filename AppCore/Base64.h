// Bytes as text that survives everywhere: the standard Base64 alphabet with padding (RFC 4648, section 4), no line breaks.
// Threads: pure functions.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillet {

[[nodiscard]] std::string encodeBase64(std::string_view bytes);

/// Strict: nothing for a text that `encodeBase64` does not make.
[[nodiscard]] std::optional<std::string> decodeBase64(std::string_view text);

}  // namespace quillet
