// The sum of the last so many values, in whole numbers: several in a row turn a step into a smooth curve of finite length that
// arrives exactly, since no rounding error adds up in it. It knows no unit; whoever uses it scales its values.
// Threads: one at a time.
#pragma once

#include "platform/base/RealtimeScope.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace quillet {

template <std::size_t length> class MovingSum {
public:
    /// As if it had been given `value` for ever.
    explicit MovingSum(std::int64_t value)
        : m_sum(value * static_cast<std::int64_t>(length))
    {
        m_values.fill(value);
    }

    std::int64_t next(std::int64_t value) QUILLET_REALTIME
    {
        m_sum += value - m_values[m_at];
        m_values[m_at] = value;
        m_at = m_at + 1 == length ? 0 : m_at + 1;
        return m_sum;
    }

private:
    std::array<std::int64_t, length> m_values{};
    std::size_t m_at = 0;
    std::int64_t m_sum;
};

}  // namespace quillet
