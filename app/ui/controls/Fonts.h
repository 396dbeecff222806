// The letters of the program: the system's font in the sizes of the theme, and its monospaced face for numbers that move.
// Threads: main thread.
#pragma once

#include <QFont>

namespace quillet {

[[nodiscard]] QFont titleFont();
[[nodiscard]] QFont controlFont();
[[nodiscard]] QFont secondaryFont();
/// Every digit as wide as the next.
[[nodiscard]] QFont numberFont(int pixels);

}  // namespace quillet
