// What the engine reads and writes of the application's state. It keeps the engine ignorant of everything else that the state
// holds.
// Threads: main thread.
#pragma once

#include "AppCore/TimeRange.h"
#include "app/playback/UpcomingPass.h"

#include <cstdint>
#include <vector>

namespace quillet {

class PlaybackState {
public:
    /// The length of the window that hold mode repeats.
    static constexpr double holdWindowSeconds = 0.08;

    virtual ~PlaybackState() = default;

    [[nodiscard]] virtual bool holdEnabled() const = 0;
    /// Start of the held window, seconds of file time.
    [[nodiscard]] virtual double holdPosition() const = 0;
    [[nodiscard]] virtual TimeRange region() const = 0;
    [[nodiscard]] virtual bool loopEnabled() const = 0;
    /// The pause between two passes of the loop is the sum of both.
    [[nodiscard]] virtual std::int64_t loopDelaySeconds() const = 0;
    [[nodiscard]] virtual std::int64_t loopDelayMilliseconds() const = 0;

    /// What follows the pass that plays, in order; nothing: it is the last one. The held window, or the region if it loops.
    [[nodiscard]] virtual std::vector<UpcomingPass> upcomingPasses() const
    {
        UpcomingPass next{ .segment = region() };
        if (holdEnabled())
            next = { .segment = { holdPosition(), holdPosition() + holdWindowSeconds }, .isHeld = true };
        else if (!loopEnabled() || next.segment.isEmpty())
            return {};
        return { next };
    }
    /// One of them is heard from now on, for the `repetition`th time in a row, counted from 0: it is what `region`, speed and
    /// pitch are to say.
    virtual void passBegins(const UpcomingPass& pass, std::int64_t repetition)
    {
        static_cast<void>(pass);
        static_cast<void>(repetition);
    }

    virtual void setIsPlaying(bool isPlaying) = 0;
    /// Seconds of file time.
    virtual void setPlaybackPosition(double positionSeconds) = 0;
    /// A segment has been handed to the device to its last frame, and nothing follows it.
    virtual void playbackDidEnd() = 0;
};

}  // namespace quillet
