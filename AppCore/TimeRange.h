// A stretch of a file's time: the selected region, a segment that plays, a held window. It knows neither the file nor what it
// stands for.
// Threads: a value, no shared state.
#pragma once

namespace quillet {

struct TimeRange {
    /// Seconds of file time; the end does not belong to it.
    double start = 0;
    double end = 0;

    /// Also where the ends are exchanged.
    [[nodiscard]] bool isEmpty() const { return !(start < end); }

    bool operator==(const TimeRange&) const = default;
};

}  // namespace quillet
