#include "platform/audio/FillPolicy.h"

#include <algorithm>
#include <cmath>

namespace quillet {
namespace {

// At 44.1 kHz.
constexpr double fillAtNormalSpeed = 2048;
constexpr double fillAtHighSpeed = 8192;
constexpr double fillAtHighSpeedInRealtime = 3072;

constexpr double cautionSeconds = 30;
constexpr double highSpeed = 1.5;
/// The ring holds the block that is asked for and the one that will be asked for while it is filled again.
constexpr std::int64_t blocks = 2;
/// More than any device asks for at once; it bounds what the ring must hold.
constexpr std::int64_t maxBlock = 16384;

}  // namespace

std::int64_t FillPolicy::target(double slope, int sampleRate, const Device& device)
{
    const auto scaled = [sampleRate](double framesAt44100) { return std::llround(framesAt44100 * sampleRate / 44100); };
    if (device.underruns != m_seenUnderruns) {
        m_seenUnderruns = device.underruns;
        m_cautiousFrames = std::llround(cautionSeconds * sampleRate);
    }
    const double highest = m_priority == ThreadPriority::realtime ? fillAtHighSpeedInRealtime : fillAtHighSpeed;
    const double excess = std::clamp((slope - 1) / (highSpeed - 1), 0.0, 1.0);
    const double frames = m_cautiousFrames > 0 ? fillAtHighSpeed : fillAtNormalSpeed + excess * (highest - fillAtNormalSpeed);
    return std::max<std::int64_t>(scaled(frames), blocks * std::min(device.maxBlock, maxBlock));
}

void FillPolicy::rendered(std::int64_t frames) { m_cautiousFrames = std::max<std::int64_t>(0, m_cautiousFrames - frames); }

}  // namespace quillet
