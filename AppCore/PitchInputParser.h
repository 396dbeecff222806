// What a text typed into the pitch field asks for, and the texts that show a pitch. It knows neither the field nor the engine.
// Threads: callable from every thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillet::PitchInputParser {

/// Cents, 100 to the semitone.
inline constexpr double min = -1200;
inline constexpr double max = 1200;
/// What the note A is tuned to, Hz.
inline constexpr double concertPitchHz = 440;

/// Cents, within the bounds: "300" is that pitch, "+50" or "-50" is relative to `anchorCents`, the pitch now shown, so
/// that a leading minus always means lower by. With "st" after it the number is one of semitones, with "ct" of cents.
/// "A=443" brings a song whose A is at 443 Hz to `concertPitchHz`. Capitals are like small letters, and blanks at the ends and
/// between these parts do not count.
[[nodiscard]] std::optional<double> parse(std::string_view text, double anchorCents);

/// Whole cents, the fraction cut off, with a plus where they are above 0. `cents` is finite and fits 64 bits (REQUIRE).
[[nodiscard]] std::string format(double cents);

/// In semitones and cents, to a tenth of a cent: "+2 st", "-11.8 ct", "+1 st 50 ct"; empty for none. `cents` as for `format`.
[[nodiscard]] std::string describe(double cents);

}  // namespace quillet::PitchInputParser
