// What is to be played after the pass that plays: the engine hands it to the graph ahead of time, and tells the state when it
// begins.
// Threads: a value, no shared state.
#pragma once

#include "AppCore/TimeRange.h"

#include <cstdint>
#include <optional>

namespace quillet {

struct UpcomingPass {
    static constexpr std::int64_t endless = INT64_MAX;

    TimeRange segment = {};
    /// Percent and cents, in place of what is set; nothing: as is set.
    std::optional<double> speed = std::nullopt;
    std::optional<double> pitch = std::nullopt;
    /// A held window: it follows without a pause.
    bool isHeld = false;
    /// How often in a row.
    std::int64_t times = endless;
    /// By which the state knows it: the number of the first of them, the others count on, and the saved loop that it is.
    std::int64_t number = 0;
    std::optional<std::size_t> loop = std::nullopt;

    bool operator==(const UpcomingPass&) const = default;
};

}  // namespace quillet
