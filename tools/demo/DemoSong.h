// The demo song: eight bars for drums, bass, tine piano, pad and a singing lead, and a last chord. It is what the player
// starts with when it is given no file, and something to try loops and speeds on.
// Threads: pure functions.
#pragma once

#include "tools/demo/StereoSound.h"

namespace quillet {

/// The whole song, its loudest sample 1 dB below full scale; the same on every call.
StereoSound renderDemoSong();

}  // namespace quillet
