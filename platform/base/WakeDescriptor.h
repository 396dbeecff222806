// A file descriptor that becomes readable when another thread, the device callback included, raises it: the bridge into the
// main thread's event loop.
// Threads: `raise` anywhere, without locks or waiting; `clear` and `descriptor` on the thread that watches.
#pragma once

namespace quillet {

class WakeDescriptor {
public:
    WakeDescriptor();
    ~WakeDescriptor();
    WakeDescriptor(const WakeDescriptor&) = delete;
    WakeDescriptor& operator=(const WakeDescriptor&) = delete;

    void raise() noexcept;
    /// Makes the descriptor unreadable again, until the next raise.
    void clear() noexcept;
    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

}  // namespace quillet
