// Turns Ctrl-C, a request to terminate and the loss of the terminal into something that can be asked for or watched, so that a
// command can end cleanly.
// Threads: made and asked on the main thread; one at a time.
#pragma once

#include "platform/base/WakeDescriptor.h"

namespace quillet {

class Interruption {
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    [[nodiscard]] bool requested() const;
    /// Readable once it is requested, until it is acknowledged.
    [[nodiscard]] int descriptor() const { return m_wake.descriptor(); }

    void acknowledge() { m_wake.clear(); }

    /// What a shell expects of a program that ended for it.
    static constexpr int exitStatus = 130;

private:
    WakeDescriptor m_wake;
};

}  // namespace quillet
