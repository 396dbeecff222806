// Which of the two channels are listened to.
// Threads: constants.
#pragma once

namespace quillet {

enum class ChannelMode {
    /// As they are.
    stereo,
    /// One channel, on both sides.
    left,
    right,
    /// Both together.
    mono,
    /// What differs between the two: what is in the middle, as voices often are, is gone.
    sides,
};

}  // namespace quillet
