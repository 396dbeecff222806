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
    m_mixed = 0;
    m_end.reset();
    m_passEnds.clear();
    if (m_take == nullptr)
        return;
    const auto capacity = std::bit_ceil(static_cast<std::uint64_t>(m_take->sampleRate / 2));
    m_history.resize(2 * capacity);
    m_mask = static_cast<std::int64_t>(capacity) - 1;
    m_wide.resize(static_cast<std::size_t>(blockFrames * m_take->ring.width()));
    m_gains.resize(m_take->sources.size());
    for (std::size_t source = 0; source < m_gains.size(); ++source)
        m_gains[source] = targetGain(source);
}

std::int64_t MixedSource::fetch(std::int64_t frame)
{
    bool taken = false;
    while (m_mixed < frame) {
        // Read before the ends: an end is pushed before the frames around it, so none is overlooked.
        const std::int64_t available = m_take->ring.available();
        takeEnds();
        std::int64_t count = std::min({frame - m_mixed, available, blockFrames});
        if (m_end)
            count = std::min(count, *m_end - m_mixed);
        if (count <= 0)
            break;
        const auto wide = std::span(m_wide).first(static_cast<std::size_t>(count * m_take->ring.width()));
        m_take->ring.read(wide);
        mix(wide, count);
        taken = true;
    }
    if (taken)
        m_consumed();
    return m_mixed;
}

void MixedSource::copy(std::int64_t first, std::span<float> stereo) const
{
    const std::int64_t count = static_cast<std::int64_t>(stereo.size()) / 2;
    for (std::int64_t i = 0; i < count; ++i) {
        const std::int64_t frame = first + i;
        const bool known = frame >= 0 && frame < m_mixed && frame >= m_mixed - (m_mask + 1);
        for (std::int64_t channel = 0; channel < 2; ++channel)
            stereo[static_cast<std::size_t>(2 * i + channel)]
                = known ? m_history[static_cast<std::size_t>(2 * (frame & m_mask) + channel)] : 0.0F;
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

float MixedSource::targetGain(std::size_t source) const
{
    float gain = 1;
    for (const auto& stage : m_take->sources[source].gains)
        gain *= stage->factor.load(std::memory_order_relaxed);
    return gain;
}

/// Adds the sources up, their gains gliding to where the mixers are.
void MixedSource::mix(std::span<const float> wide, std::int64_t count)
{
    const float step = static_cast<float>(1 / (gainGlideSeconds * m_take->sampleRate));
    const std::size_t width = 2 * m_gains.size();
    for (std::int64_t i = 0; i < count; ++i) {
        float* out = m_history.data() + 2 * ((m_mixed + i) & m_mask);
        out[0] = out[1] = 0;
    }
    for (std::size_t source = 0; source < m_gains.size(); ++source) {
        const float target = targetGain(source);
        for (std::int64_t i = 0; i < count; ++i) {
            float& gain = m_gains[source];
            if (gain != target)
                gain = gain < target ? std::min(target, gain + step) : std::max(target, gain - step);
            const float* in = wide.data() + static_cast<std::size_t>(i) * width + 2 * source;
            float* out = m_history.data() + 2 * ((m_mixed + i) & m_mask);
            out[0] += in[0] * gain;
            out[1] += in[1] * gain;
        }
    }
    m_mixed += count;
}

}  // namespace quillet
