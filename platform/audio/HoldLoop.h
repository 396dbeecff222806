// The sound of a held instant: the frames around it made into a short loop that sounds on evenly. A fixed length would repeat
// out of phase, which trembles and detunes; so the length is searched where the sound at the loop's end continues like the
// sound at its start, and the joint is faded over. It reads no files, resamples nothing and keeps no state.
// Threads: pure functions, any thread but the device callback's (they allocate).
#pragma once

#include <cstdint>
#include <span>

namespace quillet {

/// The frames that the search and the fade look at: so many ahead of the held window's first frame, and so many in all. Fewer
/// will do at either end of a file.
[[nodiscard]] std::int64_t holdLeadFrames(int sampleRate);
[[nodiscard]] std::int64_t holdSpanFrames(int sampleRate);

/// The length in frames with which the window that begins at frame `startFrame` of `stereo` repeats best: 60 to 100 ms, less
/// only where the frames end earlier (but at least 20 ms, silence then). Of several files that play in step it wants the sum,
/// so that all of them repeat with one length. It takes about a millisecond.
[[nodiscard]] std::int64_t holdLoopLength(std::span<const float> stereo, std::int64_t startFrame, int sampleRate);

/// Fills `loop` with the window that begins at frame `startFrame` of `stereo`; its size is the loop's length. It starts with
/// the window's own first frames, and its last 6 ms fade over into those ahead of the window, so that it repeats without a
/// joint. Frames beyond the end of `stereo` are silent.
void makeHoldLoop(std::span<const float> stereo, std::int64_t startFrame, int sampleRate, std::span<float> loop);

}  // namespace quillet
