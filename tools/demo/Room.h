// What happens to the demo song's sound after it was played: an echo between the sides, a short room around everything, and
// the final level.
// Threads: pure functions.
#pragma once

#include "tools/demo/StereoSound.h"

namespace quillet {

void mixInto(StereoSound& target, const StereoSound& source, double gain);

/// Repeats of `source`, by turns left and right, each `feedback` (0 to 1) times the one before; without `source` itself.
StereoSound echoOf(const StereoSound& source, double delaySeconds, double feedback);

/// The reverberation of `source` in a small room; without `source` itself.
StereoSound roomOf(const StereoSound& source);

/// Scales `sound` so that its loudest sample has `peakDb` decibels below full scale (negative). Loud peaks are rounded off
/// first.
void level(StereoSound& sound, double peakDb);

}  // namespace quillet
