#include "platform/audio/Limiter.h"

#include <algorithm>
#include <cmath>

namespace quillet {
namespace {

constexpr float fullScale = 1.0F;
/// Part of the way back covered per frame, twice in a row: half way after some 110 ms, all of it within a second at 44.1 kHz.
constexpr double recoveryPerFrame = 0.00035;
constexpr double arrived = 1e-4;

/// One frame of falling at once and rising slowly.
double recovered(double gain, double target) QUILLET_REALTIME
{
    return target - gain < arrived ? target : gain + (target - gain) * recoveryPerFrame;
}

}  // namespace

void Limiter::process(std::span<float> stereo, bool engaged) QUILLET_REALTIME
{
    for (std::size_t i = 0; i + 1 < stereo.size(); i += 2) {
        const float left = stereo[i];
        const float right = stereo[i + 1];
        const float gain = nextGain(engaged ? std::max(std::abs(left), std::abs(right)) : 0.0F);
        stereo[i] = m_delayed[m_at] * gain;
        stereo[i + 1] = m_delayed[m_at + 1] * gain;
        if (gain != 1.0F) {
            // Rounding may leave a sample a hair beyond.
            stereo[i] = std::clamp(stereo[i], -fullScale, fullScale);
            stereo[i + 1] = std::clamp(stereo[i + 1], -fullScale, fullScale);
        }
        m_delayed[m_at] = left;
        m_delayed[m_at + 1] = right;
        m_at = (m_at + 2) % m_delayed.size();
    }
}

/// The gain for the frame that leaves the delay now, given the peak of the frame that enters it. What a peak needs is held for
/// longer than the delay, so that the means, which look back over the delay, have come all the way down when the peak leaves.
float Limiter::nextGain(float peak) QUILLET_REALTIME
{
    const double held = heldGain(peak > fullScale ? static_cast<double>(fullScale) / static_cast<double>(peak) : 1.0);
    m_recovering = recovered(m_recovering, held);
    m_gain = recovered(m_gain, m_recovering);
    const auto whole = static_cast<std::int64_t>(m_gain * static_cast<double>(unity));
    const std::int64_t sum = m_third.next(m_second.next(m_first.next(whole)));
    constexpr std::int64_t sumOfOnes = unity * firstMean * secondMean * thirdMean;
    return sum == sumOfOnes ? 1.0F : static_cast<float>(static_cast<double>(sum) / static_cast<double>(sumOfOnes));
}

/// The lowest gain needed within the last holdBlocks blocks and the present one.
double Limiter::heldGain(double needed) QUILLET_REALTIME
{
    m_lowestOfBlock = std::min(m_lowestOfBlock, needed);
    const double lowest = std::min(m_lowestOfBlock, m_lowestHeld);
    if (++m_blockFrames == delayFrames) {
        m_lowest[m_block] = m_lowestOfBlock;
        m_block = (m_block + 1) % m_lowest.size();
        m_lowestHeld = *std::ranges::min_element(m_lowest);
        m_lowestOfBlock = 1;
        m_blockFrames = 0;
    }
    return lowest;
}

}  // namespace quillet
