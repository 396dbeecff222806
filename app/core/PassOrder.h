// Which pass follows which: the region again, at the trainer's next speed, the loop that was called up, or the next one of the
// list. It reads the values and changes nothing.
// Threads: main thread.
#pragma once

#include "AppCore/Practice.h"
#include "AppCore/TimeRange.h"
#include "app/playback/UpcomingPass.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quillet::PassOrder {

/// So many changes of speed, or of the loop, are known ahead.
inline constexpr std::size_t maxChangesAhead = 64;

/// Passes of `region` from the trainer's pass `number` on.
[[nodiscard]] std::vector<UpcomingPass> trained(const TimeRange& region, const Trainer& trainer, std::int64_t number);
/// Passes of the loop, which is `index`, with its own speed and pitch, or its trainer's speeds; `repeats`: for ever.
[[nodiscard]] std::vector<UpcomingPass> called(const NamedLoop& loop, std::size_t index, bool repeats);
/// Passes of the list from pass `number` of loop `index` on, for ever; nothing where there are no loops.
[[nodiscard]] std::vector<UpcomingPass> listed(const std::vector<NamedLoop>& loops, std::size_t index, std::int64_t number);

}  // namespace quillet::PassOrder
