// What is kept for each song beyond its settings: its saved loops, the trainer and which channels are heard; and their JSON
// form. What is read is brought within its limits; what cannot be is left out.
// Threads: values, no shared state.
#pragma once

#include "AppCore/TimeRange.h"
#include "AppCore/Trainer.h"
#include "platform/audio/ChannelMode.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

/// A part of the song under a name, with how it is practised.
struct NamedLoop {
    static constexpr std::size_t maxNameLength = 80;
    static constexpr int colorCount = 8;
    static constexpr std::int64_t maxTimes = 99;

    /// UTF-8, one line.
    std::string name = {};
    /// Seconds of file time.
    TimeRange region = {};
    /// Percent and cents.
    double speed = 100;
    double pitch = 0;
    std::optional<Trainer> trainer = std::nullopt;
    /// 0 to `colorCount` - 1.
    int color = 0;
    /// How often it is played before the next one, when the loops are played as a list.
    std::int64_t times = 4;

    bool operator==(const NamedLoop&) const = default;
};

struct Practice {
    static constexpr std::size_t maxLoops = 500;

    ChannelMode channels = ChannelMode::stereo;
    Trainer trainer;
    std::vector<NamedLoop> loops;

    bool operator==(const Practice&) const = default;
};

/// As they are written in a record and on the command line: "stereo", "left", "right", "mono", "sides".
[[nodiscard]] std::optional<ChannelMode> channelsNamed(std::string_view name);
[[nodiscard]] std::vector<std::string> channelNames();

/// The name as it may be: one line of at most `NamedLoop::maxNameLength` characters, without blanks at its ends and control
/// characters; empty where nothing is left.
[[nodiscard]] std::string loopName(std::string_view text);

/// One JSON object; every number reads back exactly.
[[nodiscard]] std::string encodePractice(const Practice& practice);
/// Nothing where the text is no JSON object. Members that are missing or wrong are as by default, loops that are no loops left
/// out.
[[nodiscard]] std::optional<Practice> decodePractice(std::string_view json);

}  // namespace quillet
