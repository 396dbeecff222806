// Brings the program's window before all others and gives it the keys, which desktops allow only where the user has asked for
// it. It knows how X11 and Wayland are told that.
// Threads: main thread.
#pragma once

#include <string>

class QWindow;

namespace quillet {

/// What the desktop gives a program that it starts on the user's behalf, as proof of that; empty where it gave nothing.
struct ActivationProof {
    /// Wayland's XDG_ACTIVATION_TOKEN.
    std::string token;
    /// X11's DESKTOP_STARTUP_ID.
    std::string startupId;
};

/// Takes a window out of the dock too. Also tells the desktop that the start has come to its end.
void bringToFront(QWindow& window, const ActivationProof& proof);

}  // namespace quillet
