#include "platform/audio/MixedSource.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace quillet {
namespace {

constexpr std::int64_t blockFrames = 512;
constexpr double gainGlideSeconds = 0.005;

}  // namespace

MixedSource::MixedSource(std::function<void()> consumed)
    : m_consumed(std::move(consumed))
{
}

void MixedSource::begin(std::shared_ptr<Take> take)
{
    m_take = std::move(take);
    m_fetched = 0;
    m_end.reset();
    m_jointAtEnd = 0;
    m_passEnds.clear();
    if (m_take == nullptr)
        return;
    const auto capacity = std::bit_ceil(static_cast<std::uint64_t>(m_take->sampleRate / 2));
    m_width = static_cast<std::size_t>(m_take->ring.width());
    m_history.resize(m_width * capacity);
    m_mask = static_cast<std::int64_t>(capacity) - 1;
}

std::int64_t MixedSource::fetch(std::int64_t frame)
{
    bool taken = false;
    while (m_fetched < frame) {
        // Read before the ends: an end is pushed before the frames around it, so none is overlooked.
        const std::int64_t available = m_take->ring.available();
        takeEnds();
        std::int64_t count = std::min({ frame - m_fetched, available, blockFrames });
        if (m_end)
            count = std::min(count, *m_end - m_fetched);
        if (count <= 0)
            break;
        count = std::min(count, m_mask + 1 - (m_fetched & m_mask));
        m_take->ring.read(std::span(m_history).subspan(static_cast<std::size_t>(m_fetched & m_mask) * m_width,
                                                       static_cast<std::size_t>(count) * m_width));
        m_fetched += count;
        taken = true;
    }
    if (taken)
        m_consumed();
    return m_fetched;
}

bool MixedSource::knows(std::int64_t frame) const
{
    return frame >= 0 && frame < m_fetched && frame >= m_fetched - (m_mask + 1);
}

const float* MixedSource::frameAt(std::int64_t frame) const
{
    return m_history.data() + static_cast<std::size_t>(frame & m_mask) * m_width;
}

void MixedSource::readGains(Gains& gains) const
{
    gains.clear();
    for (const TakeSource& source : m_take->sources) {
        float gain = 1;
        for (const auto& stage : source.gains)
            gain *= stage->factor.load(std::memory_order_relaxed);
        gains.push_back(gain);
    }
}

void MixedSource::mixGliding(std::int64_t first, std::span<float> stereo, Gains& gains) const
{
    readGains(m_targets);
    if (gains == m_targets) {
        mixSteady(first, stereo, gains);
        return;
    }
    const auto step = static_cast<float>(1 / (gainGlideSeconds * m_take->sampleRate));
    for (std::size_t i = 0; i < stereo.size(); i += 2) {
        for (std::size_t source = 0; source < gains.size(); ++source) {
            const float target = m_targets[source];
            gains[source] =
                gains[source] < target ? std::min(target, gains[source] + step) : std::max(target, gains[source] - step);
        }
        mixSteady(first + static_cast<std::int64_t>(i / 2), stereo.subspan(i, 2), gains);
    }
}

void MixedSource::mixSteady(std::int64_t first, std::span<float> stereo, const Gains& gains) const
{
    std::ranges::fill(stereo, 0.0F);
    for (std::size_t i = 0; i < stereo.size(); i += 2) {
        const std::int64_t frame = first + static_cast<std::int64_t>(i / 2);
        if (!knows(frame))
            continue;
        const float* in = frameAt(frame);
        for (std::size_t source = 0; source < gains.size(); ++source) {
            stereo[i] += in[2 * source] * gains[source];
            stereo[i + 1] += in[2 * source + 1] * gains[source];
        }
    }
}

std::optional<PassEnd> MixedSource::nextPassEnd() const
{
    if (m_passEnds.empty())
        return std::nullopt;
    return m_passEnds.front();
}

void MixedSource::passNextEnd() { m_passEnds.erase(m_passEnds.begin()); }

void MixedSource::obeyClosing(std::int64_t earliest)
{
    if (m_take == nullptr || m_end || !m_take->closed.load(std::memory_order_acquire))
        return;
    takeEnds();
    if (m_passEnds.empty())
        return;
    const PassEnd& cut = m_passEnds.front();
    m_end = std::min(cut.frame, std::max(cut.frame - cut.joint, earliest));
    m_jointAtEnd = *m_end - (cut.frame - cut.joint);
    m_passEnds.clear();
}

void MixedSource::takeEnds()
{
    while (const auto end = m_take->passEnds.pop()) {
        if (end->last)
            m_end = std::min(m_end.value_or(end->frame), end->frame);
        else if (!m_end)
            m_passEnds.push_back(*end);
    }
}

}  // namespace quillet
