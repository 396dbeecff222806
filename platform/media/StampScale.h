// Turns the time stamps of a stream into frames of its decoded sound, frame 0 being the first one of a decode from the start,
// and back. Where the stamps are too coarse to name a frame (milliseconds, say) but all blocks have one length, or lengths with
// a common divisor, the answer is rounded to where a block can start.
// Threads: pure values.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace quillet {

/// What a decode from the start has shown: one entry a block, in order.
struct StampedBlock {
    std::optional<std::int64_t> ticks;
    std::int64_t frames;
};

/// The container's clock: a tick is `tickNumerator / tickDenominator` seconds; `sampleRate` in frames per second.
struct StreamClock {
    int tickNumerator;
    int tickDenominator;
    int sampleRate;
    /// Set for bare streams: their stamps are made by adding up the rounded durations of blocks, so the error grows.
    bool accumulatesRounding;
    /// All blocks but the first and the last are multiples of so many frames long; 0 if only looking can tell.
    std::int64_t blockStep;

    /// Whether every frame has a stamp of its own.
    [[nodiscard]] bool isExact() const;
};

class StampScale {
public:
    /// `start` holds the first blocks of a decode from the start, at least one with a stamp for `position` to make sense.
    StampScale(const StreamClock& clock, std::span<const StampedBlock> start);

    [[nodiscard]] std::int64_t position(std::int64_t ticks) const;
    /// The latest stamp at or before `position` as far as rounding allows; negative positions are before the first frame.
    [[nodiscard]] std::int64_t ticks(std::int64_t position) const;
    /// How far `position` may be from the truth, in frames; 0 for an exact clock and for equal blocks.
    [[nodiscard]] std::int64_t tolerance() const { return m_tolerance; }

private:
    [[nodiscard]] std::int64_t unshifted(std::int64_t ticks) const;

    /// Frames per tick, as a fraction.
    std::int64_t m_frames;
    std::int64_t m_ticks;
    std::int64_t m_origin = 0;
    std::int64_t m_grid = 0;
    std::int64_t m_gridPhase = 0;
    std::int64_t m_tolerance = 0;
};

}  // namespace quillet
