#include "platform/audio/MixedSource.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

namespace quillet {
namespace {

constexpr std::int64_t blockFrames = 512;
constexpr double gainGlideSeconds = 0.005;

using ChannelGains = std::array<float, 4>;

constexpr ChannelGains asTheyAre{ 1, 0, 0, 1 };

/// Two like channels stay as loud as they are; what differs is raised a little, since there is less of it.
ChannelGains gainsOf(ChannelMode channels)
{
    constexpr float half = 0.5F;
    constexpr float apart = 0.7071068F;
    switch (channels) {
    case ChannelMode::left:
        return { 1, 0, 1, 0 };
    case ChannelMode::right:
        return { 0, 1, 0, 1 };
    case ChannelMode::mono:
        return { half, half, half, half };
    case ChannelMode::sides:
        return { apart, -apart, apart, -apart };
    case ChannelMode::stereo:
        break;
    }
    return asTheyAre;
}

bool endsLeg(const PassEnd& end) { return end.last || end.pauseFrames > 0; }

}  // namespace

MixedSource::MixedSource(std::function<void()> consumed)
    : m_consumed(std::move(consumed))
{
}

void MixedSource::begin(std::shared_ptr<Run> run)
{
    m_run = std::move(run);
    m_passEnds.clear();
    m_legEnd.reset();
    if (m_run == nullptr)
        return;
    m_fetched = -m_run->leadFrames;
    m_legStart = m_fetched;
    const auto capacity = std::bit_ceil(static_cast<std::uint64_t>(m_run->sampleRate / 2));
    m_width = static_cast<std::size_t>(m_run->ring.width());
    m_history.resize(m_width * capacity);
    m_mask = static_cast<std::int64_t>(capacity) - 1;
}

std::int64_t MixedSource::fetch(std::int64_t frame)
{
    bool taken = false;
    while (m_fetched < frame) {
        // Read before the ends: an end is pushed before the frames around it, so none is overlooked.
        const std::int64_t available = m_run->ring.available();
        takeEnds();
        std::int64_t count = std::min({ frame - m_fetched, available, blockFrames });
        if (m_legEnd)
            count = std::min(count, *m_legEnd - m_fetched);
        if (count <= 0)
            break;
        count = std::min(count, m_mask + 1 - (m_fetched & m_mask));
        m_run->ring.read(std::span(m_history).subspan(static_cast<std::size_t>(m_fetched & m_mask) * m_width,
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
    return frame >= m_legStart && frame < m_fetched && frame >= m_fetched - (m_mask + 1);
}

const float* MixedSource::frameAt(std::int64_t frame) const
{
    return m_history.data() + static_cast<std::size_t>(frame & m_mask) * m_width;
}

const MixedSource::Gains& MixedSource::gains() const
{
    m_targets.clear();
    for (const RunSource& source : m_run->sources) {
        float gain = 1;
        for (const auto& stage : source.gains)
            gain *= stage->factor.load(std::memory_order_relaxed);
        m_targets.push_back(gain);
    }
    const ChannelGains channels = gainsOf(m_channels.load(std::memory_order_relaxed));
    m_targets.insert(m_targets.end(), channels.begin(), channels.end());
    return m_targets;
}

void MixedSource::mix(std::int64_t first, std::span<float> stereo, Gains& gains) const
{
    const Gains& targets = this->gains();
    const auto step = static_cast<float>(1 / (gainGlideSeconds * m_run->sampleRate));
    std::size_t done = 0;
    for (; done < stereo.size() && gains != targets; done += 2) {
        for (std::size_t i = 0; i < gains.size(); ++i) {
            const float target = targets[i];
            gains[i] = gains[i] < target ? std::min(target, gains[i] + step) : std::max(target, gains[i] - step);
        }
        mixSteady(first + static_cast<std::int64_t>(done / 2), stereo.subspan(done, 2), gains);
    }
    mixSteady(first + static_cast<std::int64_t>(done / 2), stereo.subspan(done), gains);
}

void MixedSource::mixSteady(std::int64_t first, std::span<float> stereo, const Gains& gains) const
{
    std::ranges::fill(stereo, 0.0F);
    const std::size_t sources = m_run->sources.size();
    const float* channels = gains.data() + sources;
    const bool areAsTheyAre = std::equal(asTheyAre.begin(), asTheyAre.end(), channels);
    for (std::size_t i = 0; i < stereo.size(); i += 2) {
        const std::int64_t frame = first + static_cast<std::int64_t>(i / 2);
        if (!knows(frame))
            continue;
        const float* in = frameAt(frame);
        for (std::size_t source = 0; source < sources; ++source) {
            stereo[i] += in[2 * source] * gains[source];
            stereo[i + 1] += in[2 * source + 1] * gains[source];
        }
        if (areAsTheyAre)
            continue;
        const float left = stereo[i];
        const float right = stereo[i + 1];
        stereo[i] = left * channels[0] + right * channels[1];
        stereo[i + 1] = left * channels[2] + right * channels[3];
    }
}

void MixedSource::passNextEnd()
{
    const PassEnd passed = m_passEnds.front();
    m_passEnds.pop_front();
    if (!endsLeg(passed) || passed.last)
        return;
    m_legStart = passed.frame;
    m_legEnd.reset();
    findLegEnd();
}

void MixedSource::takeEnds()
{
    bool taken = false;
    while (const auto end = m_run->passEnds.pop()) {
        m_passEnds.push_back(*end);
        taken = true;
    }
    if (taken && !m_legEnd)
        findLegEnd();
}

void MixedSource::findLegEnd()
{
    const auto end = std::ranges::find_if(m_passEnds, endsLeg);
    if (end != m_passEnds.end())
        m_legEnd = end->frame;
}

}  // namespace quillet
