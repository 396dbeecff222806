// The last stage before the device: keeps every sample within full scale, so that a boosted equaliser or a stretched peak never
// clips. It looks ahead a fixed number of frames and delays by as many; what stays within full scale passes bit for bit.
// Threads: the device callback's.
#pragma once

#include "platform/base/RealtimeScope.h"

#include <array>
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
    float nextGain(float peak) QUILLET_REALTIME;

    std::array<float, 2 * delayFrames> m_delayed{};
    std::size_t m_at = 0;
    float m_gain = 1;
    float m_target = 1;
    float m_slope = 0;
    int m_hold = 0;
};

}  // namespace quillet
