// Edits of the region by ear: its ends set at the instant that is heard, moved a little, or both moved on. The region stays
// within the file and is never shorter than `RegionClamp::minGap`. What plays goes on without a break, or starts at the new
// region where it has to.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"

namespace quillet::RegionMarks {

/// How far an end is nudged, seconds.
inline constexpr double nudgeSeconds = 0.01;

/// The region starts at the instant that is heard; where its end is not behind that, it goes on to the file's end.
void markStart(AppState& state);
/// The region ends there, of a held instant with its window, and plays from its start; where its start is not before that, it
/// begins with the file.
void markEnd(AppState& state);
void nudgeStart(AppState& state, double bySeconds);
void nudgeEnd(AppState& state, double bySeconds);
/// Moves the region by its own length, forward or back, as far as the file goes.
void moveByItsLength(AppState& state, int direction);
/// The region is the whole file.
void selectAll(AppState& state);

}  // namespace quillet::RegionMarks
