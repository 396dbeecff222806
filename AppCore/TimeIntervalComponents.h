// A time as the minutes, seconds and milliseconds that the time fields show. What is below a millisecond is cut off, never
// rounded. It bounds nothing: a field limits what it shows itself.
// Threads: a value, no shared state.
#pragma once

#include <cstdint>

namespace quillet {

struct TimeIntervalComponents {
    /// Not capped: 6000 s are 100 minutes.
    std::int64_t minutes = 0;
    std::int64_t seconds = 0;
    std::int64_t milliseconds = 0;

    bool operator==(const TimeIntervalComponents&) const = default;

    /// Each component has the time's sign or is 0. The time in milliseconds is finite and fits 64 bits (REQUIRE).
    [[nodiscard]] static TimeIntervalComponents fromSeconds(double seconds);

    /// Seconds.
    [[nodiscard]] double asTimeInterval() const;
};

}  // namespace quillet
