// A ring of audio frames between one writing and one reading thread. A frame is `width` floats; positions are counts of
// frames since the ring was made, so that a position names the same instant on both sides for ever.
// Threads: writer functions on one thread, reader functions on another; none of them allocates, locks or waits.
#pragma once

#include "platform/base/RealtimeScope.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <span>
#include <vector>

namespace quillet {

class AudioRing {
    static_assert(std::atomic<std::int64_t>::is_always_lock_free);

public:
    /// `capacityFrames` is a power of two.
    AudioRing(std::int64_t capacityFrames, int width)
        : m_width(width),
          m_capacity(capacityFrames),
          m_samples(static_cast<std::size_t>(capacityFrames * width))
    {
    }

    [[nodiscard]] std::int64_t capacity() const QUILLET_REALTIME { return m_capacity; }
    [[nodiscard]] int width() const QUILLET_REALTIME { return m_width; }

    /// Any thread: the position after the last frame written, and that of the next frame to read.
    [[nodiscard]] std::int64_t written() const QUILLET_REALTIME { return m_written.load(std::memory_order_acquire); }
    [[nodiscard]] std::int64_t consumed() const QUILLET_REALTIME { return m_consumed.load(std::memory_order_acquire); }

    // ---- Writer ----

    [[nodiscard]] std::int64_t space() const QUILLET_REALTIME
    {
        return m_capacity - (m_written.load(std::memory_order_relaxed) - consumed());
    }

    /// `frames` holds at most `space()` frames.
    void write(std::span<const float> frames) QUILLET_REALTIME
    {
        const std::int64_t at = m_written.load(std::memory_order_relaxed);
        const std::int64_t count = static_cast<std::int64_t>(frames.size()) / m_width;
        copyIn(at, frames);
        m_written.store(at + count, std::memory_order_release);
    }

    // ---- Reader ----

    [[nodiscard]] std::int64_t available() const QUILLET_REALTIME
    {
        return written() - m_consumed.load(std::memory_order_relaxed);
    }

    /// The frame `index` places after the next one, left in the ring; `index` is less than `available()`.
    [[nodiscard]] std::span<const float> peek(std::int64_t index) const QUILLET_REALTIME
    {
        const std::int64_t at = (m_consumed.load(std::memory_order_relaxed) + index) & (m_capacity - 1);
        return std::span(m_samples).subspan(static_cast<std::size_t>(at * m_width), static_cast<std::size_t>(m_width));
    }

    /// Takes `frames.size() / width` frames out, at most `available()`.
    void read(std::span<float> frames) QUILLET_REALTIME
    {
        const std::int64_t at = m_consumed.load(std::memory_order_relaxed);
        const std::int64_t count = static_cast<std::int64_t>(frames.size()) / m_width;
        const std::int64_t first = std::min(count, m_capacity - (at & (m_capacity - 1)));
        const float* begin = m_samples.data() + (at & (m_capacity - 1)) * m_width;
        std::copy_n(begin, first * m_width, frames.data());
        std::copy_n(m_samples.data(), (count - first) * m_width, frames.data() + first * m_width);
        m_consumed.store(at + count, std::memory_order_release);
    }

    /// Moves the reader forward to `position`, which lies between `consumed()` and `written()`.
    void skipTo(std::int64_t position) QUILLET_REALTIME { m_consumed.store(position, std::memory_order_release); }

private:
    void copyIn(std::int64_t at, std::span<const float> frames) QUILLET_REALTIME
    {
        const std::int64_t count = static_cast<std::int64_t>(frames.size()) / m_width;
        const std::int64_t first = std::min(count, m_capacity - (at & (m_capacity - 1)));
        std::copy_n(frames.data(), first * m_width, m_samples.data() + (at & (m_capacity - 1)) * m_width);
        std::copy_n(frames.data() + first * m_width, (count - first) * m_width, m_samples.data());
    }

    int m_width;
    std::int64_t m_capacity;
    std::vector<float> m_samples;
    alignas(64) std::atomic<std::int64_t> m_written{ 0 };
    alignas(64) std::atomic<std::int64_t> m_consumed{ 0 };
};

}  // namespace quillet
