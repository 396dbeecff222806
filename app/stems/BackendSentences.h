// What the separation says in English, in the user's language.
// Threads: main thread.
#pragma once

#include <QString>

#include <string_view>

namespace quillet {

/// Each line that says one of the separation's own sentences in the application's language; what is in it (a path, an amount, a
/// reason of the system's) stays as it is, and so does every other line.
[[nodiscard]] QString inUsersLanguage(std::string_view said);

}  // namespace quillet
