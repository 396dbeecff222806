// A queue of fixed capacity between exactly one producer thread and one consumer thread. It never allocates after
// construction, never waits, and tells "full" and "empty" instead. For streams of audio use AudioRing, which moves blocks.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>
#include <type_traits>

namespace quillet {

template <typename T, std::size_t capacity> class SpscQueue {
    static_assert((capacity & (capacity - 1)) == 0, "the capacity is a power of two");
    static_assert(std::is_trivially_copyable_v<T>, "items are copied on a thread that may not allocate");
    static_assert(std::atomic<std::size_t>::is_always_lock_free);

public:
    /// Producer thread.
    [[nodiscard]] bool isFull() const noexcept
    {
        return m_end.load(std::memory_order_relaxed) - m_begin.load(std::memory_order_acquire) == capacity;
    }

    /// Producer thread. False when the queue is full; the item is then not taken.
    [[nodiscard]] bool push(const T& item) noexcept
    {
        const std::size_t end = m_end.load(std::memory_order_relaxed);
        if (end - m_begin.load(std::memory_order_acquire) == capacity)
            return false;
        m_items[end & (capacity - 1)] = item;
        m_end.store(end + 1, std::memory_order_release);
        return true;
    }

    /// Consumer thread. The item `index` places after the oldest, left in the queue; null where there is none.
    [[nodiscard]] const T* peek(std::size_t index) const noexcept
    {
        const std::size_t begin = m_begin.load(std::memory_order_relaxed);
        if (m_end.load(std::memory_order_acquire) - begin <= index)
            return nullptr;
        return &m_items[(begin + index) & (capacity - 1)];
    }

    /// Consumer thread. The oldest item, left in the queue.
    [[nodiscard]] const T* front() const noexcept { return peek(0); }

    /// Consumer thread. Takes the oldest item out; nothing when the queue is empty.
    std::optional<T> pop() noexcept
    {
        const T* item = front();
        if (item == nullptr)
            return std::nullopt;
        const T copy = *item;
        m_begin.store(m_begin.load(std::memory_order_relaxed) + 1, std::memory_order_release);
        return copy;
    }

private:
    std::array<T, capacity> m_items{};
    alignas(64) std::atomic<std::size_t> m_begin{ 0 };
    alignas(64) std::atomic<std::size_t> m_end{ 0 };
};

}  // namespace quillet
