// Where the play head is between two reports of its position, which come 20 times a second: it glides at the playback's rate
// and lets small differences go unnoticed; large ones (a loop's joint, a jump) it follows at once. It knows no clock: whoever
// draws tells how much time has passed.
// Threads: a value, no shared state.
#pragma once

namespace quillet {

class PlayheadMotion {
public:
    /// File seconds per second: 1 is normal speed.
    void setRate(double rate) { m_rate = rate; }
    /// The play head is at `seconds` now, `sinceAdvance` seconds after the last `advance`.
    void report(double seconds, double sinceAdvance);
    /// Forgets how it was gliding: it is now where it was reported last.
    void rest();

    /// `seconds` have passed since the last call. The play head goes no further than `limit`, the region's end.
    void advance(double seconds, double limit);
    /// Where to draw it, seconds of file time.
    [[nodiscard]] double shown() const { return m_shown; }

private:
    double m_rate = 1;
    double m_reported = 0;
    double m_sinceReport = 0;
    double m_shown = 0;
};

}  // namespace quillet
