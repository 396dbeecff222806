// Where a ruler over the waveform has its ticks, and what it says at them: steps that people count in, wide enough apart to be
// read at every zoom. It draws nothing.
// Threads: pure functions.
#pragma once

#include "AppCore/WaveformCoordinates.h"

#include <string>
#include <vector>

namespace quillet {

struct RulerTick {
    /// Points from the view's left edge.
    double x = 0;
    /// Empty for the small ticks between two that are labelled.
    std::string label;
};

/// The ticks in view, from left to right. Labels are at least `labelSpacing` points apart; they name minutes and seconds
/// ("1:20"), and tenths or less where ticks are closer than a second ("1:20.25"). None for a file or a view without length.
[[nodiscard]] std::vector<RulerTick> rulerTicks(const WaveformCoordinates& coordinates, double labelSpacing);

}  // namespace quillet
