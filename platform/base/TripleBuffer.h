// The latest value of something, handed from one writing thread to one reading thread without locks or waiting. The reader
// sees whole values only; values between two reads are lost, which is the point.
// Threads: `write` on one thread, `read` on another.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <type_traits>

namespace quillet {

template <typename T> class TripleBuffer {
    static_assert(std::is_trivially_copyable_v<T>);
    static_assert(std::atomic<std::uint8_t>::is_always_lock_free);

public:
    /// Writing thread.
    void write(const T& value) noexcept
    {
        m_slots[m_writing] = value;
        m_writing = m_shared.exchange(static_cast<std::uint8_t>(m_writing | fresh), std::memory_order_acq_rel) & slotMask;
    }

    /// Reading thread. The newest value written, T{} before the first.
    const T& read() noexcept
    {
        if ((m_shared.load(std::memory_order_relaxed) & fresh) != 0)
            m_reading = m_shared.exchange(m_reading, std::memory_order_acq_rel) & slotMask;
        return m_slots[m_reading];
    }

private:
    static constexpr std::uint8_t slotMask = 3;
    static constexpr std::uint8_t fresh = 4;

    std::array<T, 3> m_slots{};
    std::atomic<std::uint8_t> m_shared{ 1 };
    std::uint8_t m_writing = 0;
    std::uint8_t m_reading = 2;
};

}  // namespace quillet
