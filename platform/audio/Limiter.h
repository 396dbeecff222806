// The last stage before the device: keeps every sample within full scale, so that a boosted equaliser or a stretched peak never
// clips. It looks ahead a fixed number of frames and delays by as many; what stays within full scale passes bit for bit. It
// knows no sample rate (its times below are those at 44.1 kHz), no threshold and no make-up gain.
// Threads: the device callback's.
#pragma once

#include "platform/audio/MovingSum.h"
#include "platform/base/RealtimeScope.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace quillet {

class Limiter {
public:
    /// The constant delay, and the time in which the gain falls ahead of a peak: 1.5 ms at 44.1 kHz.
    static constexpr int delayFrames = 64;

    /// Limits interleaved stereo frames in place, delayed by delayFrames. While not `engaged` it only delays (and lets a gain
    /// that is still reduced recover).
    void process(std::span<float> stereo, bool engaged) QUILLET_REALTIME;

private:
    /// Gains as whole numbers: this is 1.
    static constexpr std::int64_t unity = std::int64_t{ 1 } << 30;
    /// The lowest gain needed is held for this many blocks of delayFrames frames: 46 ms at 44.1 kHz, and at 192 kHz still
    /// longer than half a period of 60 Hz, so that the gain does not follow the wave.
    static constexpr std::size_t holdBlocks = 32;
    /// Three moving means in a row: a step becomes a smooth curve as long as the delay.
    static constexpr std::size_t firstMean = 22, secondMean = 22, thirdMean = 23;
    static_assert(firstMean + secondMean + thirdMean == static_cast<std::size_t>(delayFrames) + 3);

    float nextGain(float peak) QUILLET_REALTIME;
    double heldGain(double needed) QUILLET_REALTIME;

    std::array<float, 2 * delayFrames> m_delayed{};
    std::size_t m_at = 0;

    std::array<double, holdBlocks> m_lowest = filledWithOnes();
    double m_lowestHeld = 1;
    double m_lowestOfBlock = 1;
    std::size_t m_block = 0;
    int m_blockFrames = 0;

    double m_recovering = 1;
    double m_gain = 1;
    MovingSum<firstMean> m_first{ unity };
    MovingSum<secondMean> m_second{ unity * firstMean };
    MovingSum<thirdMean> m_third{ unity * firstMean * secondMean };

    static constexpr std::array<double, holdBlocks> filledWithOnes()
    {
        std::array<double, holdBlocks> ones{};
        ones.fill(1);
        return ones;
    }
};

}  // namespace quillet
