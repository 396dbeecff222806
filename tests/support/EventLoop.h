// An event loop for tests of what answers later in real time.
// Threads: main thread.
#pragma once

#include <functional>

namespace quillet {

class EventLoop {
public:
    EventLoop();

    /// Turns until `condition` holds; false if it does not within `seconds`.
    [[nodiscard]] bool runUntil(const std::function<bool()>& condition, double seconds = 20);
};

}  // namespace quillet
