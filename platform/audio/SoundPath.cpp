#include "platform/audio/SoundPath.h"

#include <algorithm>

namespace quillet {
namespace {

/// A gain that has not moved for so long rests; one that moves after so long begins another gesture.
constexpr double restSeconds = 0.06;
constexpr double gestureSeconds = 0.2;

}  // namespace

// ---- Untouched ----

void BypassPath::begin(std::int64_t position)
{
    m_position = position;
    m_gains = m_source.gains();
}

std::int64_t BypassPath::render(std::span<float> stereo)
{
    const std::int64_t wanted = static_cast<std::int64_t>(stereo.size()) / 2;
    const std::int64_t ready = m_source.fetch(m_position + wanted) - m_position;
    const std::int64_t count = std::clamp<std::int64_t>(ready, 0, wanted);
    m_source.mix(m_position, stereo.first(static_cast<std::size_t>(2 * count)), m_gains);
    m_position += count;
    return count;
}

std::int64_t BypassPath::framesTo(std::int64_t frame, std::int64_t limit) const
{
    return std::clamp<std::int64_t>(frame - m_position, 0, limit);
}

// ---- Stretched ----

void StretchedPath::begin(std::int64_t position, const TimeStretcher::Settings& settings, bool gainsMove)
{
    m_gains = m_source.gains();
    m_seenGains = m_gains;
    m_holdsOldGains = false;
    m_framesSinceMove = gainsMove ? 0 : INT64_MAX / 2;
    m_source.fetch(position);
    m_stretcher.begin(position, settings,
                      [this](std::int64_t first, std::span<float> stereo) { m_source.mix(first, stereo, m_gains); });
}

bool StretchedPath::wantsRenewal()
{
    const auto frames = [this](double seconds) { return static_cast<std::int64_t>(seconds * m_source.run()->sampleRate); };
    const MixedSource::Gains& gains = m_source.gains();
    if (gains == m_seenGains)
        return m_holdsOldGains && m_framesSinceMove > frames(restSeconds);
    const bool firstMove = m_framesSinceMove > frames(gestureSeconds);
    m_seenGains = gains;
    m_framesSinceMove = 0;
    m_holdsOldGains = true;
    return firstMove;
}

std::int64_t StretchedPath::render(std::span<float> stereo)
{
    const std::int64_t wanted = static_cast<std::int64_t>(stereo.size()) / 2;
    std::int64_t count = 0;
    const double slope = m_stretcher.slope();
    while (count < wanted && m_stretcher.slope() == slope) {
        std::int64_t most = m_stretcher.framesToChange(wanted - count);
        if (const auto end = m_source.legEnd())
            most = m_stretcher.framesTo(static_cast<double>(*end), most);
        if (most == 0)
            break;
        const std::int64_t got =
            m_stretcher.retrieve(stereo.subspan(static_cast<std::size_t>(2 * count)).first(static_cast<std::size_t>(2 * most)));
        count += got;
        if (got == 0 && !feed())
            break;
    }
    m_framesSinceMove += count;
    return count;
}

/// Feeds the stretcher what it asks for, silence after the leg's end; false when the source has not that much yet. Never less:
/// the stretcher makes something a little different of other pieces, and a file that is rendered twice is to be the same.
bool StretchedPath::feed()
{
    const std::int64_t first = m_stretcher.nextFrame();
    const std::int64_t wanted = m_stretcher.wantedFrames();
    const std::int64_t ready = m_source.fetch(first + wanted) - first;
    const bool atEnd = m_source.legEnd() && first + ready >= *m_source.legEnd();
    if (ready < wanted && !atEnd)
        return false;
    const auto block = std::span(m_block).first(static_cast<std::size_t>(2 * wanted));
    m_source.mix(first, block, m_gains);
    m_stretcher.feed(block);
    return true;
}

std::int64_t StretchedPath::framesTo(std::int64_t frame, std::int64_t limit) const
{
    return m_stretcher.framesTo(static_cast<double>(frame), limit);
}

}  // namespace quillet
