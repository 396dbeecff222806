// The letters of the program: the system's font in the sizes of the theme, and its monospaced face for numbers that move; both
// as large as the desktop's text is.
// Threads: main thread.
#pragma once

#include <QFont>

namespace quillet {

[[nodiscard]] QFont titleFont();
[[nodiscard]] QFont controlFont();
[[nodiscard]] QFont secondaryFont();
/// Every digit as wide as the next. `pixels` is the size where the desktop's text has its usual one.
[[nodiscard]] QFont numberFont(int pixels);

/// A measure that holds text, in points: `points` where the desktop's text has its usual size, and larger where that is larger.
/// There is an application.
[[nodiscard]] int scaled(int points);

}  // namespace quillet
