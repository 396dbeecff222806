// What a text typed into the pitch field asks for, and the text that the field shows. It knows neither the field nor the
// engine.
// Threads: callable from every thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillet::PitchInputParser {

/// Cents, 100 to the semitone.
inline constexpr double min = -1200;
inline constexpr double max = 1200;

/// Cents, within the bounds: "300" is that pitch, "+50" or "-50" is relative to `anchorCents`, the pitch now shown, so
/// that a leading minus always means lower by. Blanks at the ends do not count.
[[nodiscard]] std::optional<double> parse(std::string_view text, double anchorCents);

/// Whole cents, the fraction cut off, with a plus where they are above 0. `cents` is finite and fits 64 bits (REQUIRE).
[[nodiscard]] std::string format(double cents);

}  // namespace quillet::PitchInputParser
