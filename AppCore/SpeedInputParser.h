// What a text typed into the speed field asks for. It knows neither the field nor the engine: a text that means nothing is
// no value, and the caller decides what to show then.
// Threads: callable from every thread.
#pragma once

#include <optional>
#include <string_view>

namespace quillet::SpeedInputParser {

/// Percent, 100 is normal.
inline constexpr double min = 5;
inline constexpr double max = 300;

/// Percent, within the bounds: "75" or "75%" is that speed, "+10" or "-10" is relative to `anchorPercent`, the speed now
/// shown. Relative entries take no percent sign: with one, the number is the speed itself, its sign included. Blanks at
/// the ends do not count.
[[nodiscard]] std::optional<double> parse(std::string_view text, double anchorPercent);

}  // namespace quillet::SpeedInputParser
