#include "platform/audio/Limiter.h"

#include <algorithm>
#include <cmath>

namespace quillet {
namespace {

constexpr float fullScale = 1.0F;
/// Part of the way back to unity gain covered per frame: about 80 ms to recover at 44.1 kHz.
constexpr float recoveryPerFrame = 0.0008F;
constexpr float recovered = 0.9999F;

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

/// The gain for the frame that leaves the delay now, given the peak of the frame that enters it. A peak sets a slope that
/// reaches its gain just in time; the steepest slope wins, and the gain stays down until the last peak has left.
float Limiter::nextGain(float peak) QUILLET_REALTIME
{
    if (peak > fullScale) {
        const float needed = fullScale / peak;
        m_target = std::min(m_target, needed);
        m_slope = std::max(m_slope, (m_gain - needed) / static_cast<float>(delayFrames));
        m_hold = delayFrames + 1;
    }
    if (m_hold > 0) {
        --m_hold;
        if (m_gain > m_target)
            m_gain = std::max(m_target, m_gain - m_slope);
        else
            m_slope = 0;
    } else if (m_gain < 1) {
        m_gain += (1 - m_gain) * recoveryPerFrame;
        if (m_gain > recovered)
            m_gain = 1;
        m_target = 1;
    }
    return m_gain;
}

}  // namespace quillet
