// Where a client that has been told a position, and whether and how fast it plays, believes the play head to be by now. It
// measures no time.
// Threads: a value, no shared state.
#pragma once

#include <algorithm>
#include <cmath>

namespace quillet {

class BelievedPosition {
public:
    /// The client is told; `nowSeconds` is on any clock, always the same one.
    void tell(double positionSeconds, double nowSeconds)
    {
        m_position = positionSeconds;
        m_toldSeconds = nowSeconds;
    }

    /// From now on it counts with another rate (seconds of the song per second; 0: nothing moves). It goes on from what it
    /// believes.
    void setRate(double rate, double nowSeconds)
    {
        tell(at(nowSeconds), nowSeconds);
        m_rate = rate;
    }

    [[nodiscard]] double at(double nowSeconds) const { return m_position + m_rate * (nowSeconds - m_toldSeconds); }

    /// Whether it is so far off the truth that it has to be told. While it plays, reports of the play head are a little late.
    [[nodiscard]] bool isWrong(double positionSeconds, double nowSeconds) const
    {
        const double tolerance = m_rate > 0 ? playingTolerance * std::max(1.0, m_rate) : restingTolerance;
        return std::abs(at(nowSeconds) - positionSeconds) > tolerance;
    }

private:
    static constexpr double playingTolerance = 0.2;
    static constexpr double restingTolerance = 0.02;

    double m_position = 0;
    double m_toldSeconds = 0;
    double m_rate = 0;
};

}  // namespace quillet
