#include "platform/audio/Equalizer.h"

#include <algorithm>
#include <cmath>

namespace quillet {
namespace {

/// Gains move in steps of this many frames, fine enough to hear no steps.
constexpr std::size_t glideFrames = 32;
/// The time in which a gain covers 63 % of its way.
constexpr double glideSeconds = 0.006;
constexpr double arrivedDb = 0.01;

}  // namespace

void Equalizer::setGains(const BandGains& gainsDb, double sampleRate)
{
    for (std::size_t i = 0; i < gainsDb.size(); ++i)
        m_targetDb[i].store(gainsDb[i], std::memory_order_relaxed);
    m_wantedSampleRate.store(sampleRate, std::memory_order_relaxed);
}

bool Equalizer::isActive() const QUILLET_REALTIME
{
    for (std::size_t i = 0; i < m_bells.size(); ++i)
        if (m_bells[i].gainDb != 0 || m_targetDb[i].load(std::memory_order_relaxed) != 0)
            return true;
    return false;
}

void Equalizer::process(std::span<float> stereo) QUILLET_REALTIME
{
    takeSampleRate();
    if (!isActive())
        return;
    for (std::size_t at = 0; at < stereo.size(); at += 2 * glideFrames) {
        const auto block = stereo.subspan(at, std::min(2 * glideFrames, stereo.size() - at));
        for (std::size_t i = 0; i < m_bells.size(); ++i)
            if (glide(m_bells[i], m_targetDb[i].load(std::memory_order_relaxed), block.size() / 2))
                m_bells[i].process(block);
    }
}

void Equalizer::takeSampleRate() QUILLET_REALTIME
{
    const double wanted = m_wantedSampleRate.load(std::memory_order_relaxed);
    if (wanted == m_sampleRate)
        return;
    // Before the first sound there is nothing to glide from.
    const bool first = m_sampleRate == 0;
    m_sampleRate = wanted;
    for (std::size_t i = 0; i < m_bells.size(); ++i) {
        const double gainDb = first ? m_targetDb[i].load(std::memory_order_relaxed) : m_bells[i].gainDb;
        m_bells[i] = Bell{};
        m_bells[i].band = EqualizerBand(EqualizerNode::frequenciesHz[i], m_sampleRate);
        m_bells[i].setGain(gainDb);
    }
}

/// Moves the band's gain towards its target; false when the band does nothing.
bool Equalizer::glide(Bell& bell, double targetDb, std::size_t frames) QUILLET_REALTIME
{
    if (!bell.band.active)
        targetDb = 0;
    if (bell.gainDb != targetDb) {
        const double part = 1 - std::exp(-static_cast<double>(frames) / (glideSeconds * m_sampleRate));
        const double next = bell.gainDb + (targetDb - bell.gainDb) * part;
        bell.setGain(std::abs(targetDb - next) < arrivedDb ? targetDb : next);
    }
    return bell.gainDb != 0;
}

void Equalizer::Bell::setGain(double decibels) QUILLET_REALTIME
{
    if (gainDb == 0)
        first = second = {};
    gainDb = decibels;
    const double amplitude = std::pow(10.0, gainDb / 40);
    const double damping = band.inverseQ / amplitude;
    a1 = 1 / (1 + band.warpedCentre * (band.warpedCentre + damping));
    a2 = band.warpedCentre * a1;
    a3 = band.warpedCentre * a2;
    mix = damping * (amplitude * amplitude - 1);
}

void Equalizer::Bell::process(std::span<float> stereo) QUILLET_REALTIME
{
    for (std::size_t i = 0; i + 1 < stereo.size(); i += 2)
        for (std::size_t channel = 0; channel < 2; ++channel) {
            const double input = static_cast<double>(stereo[i + channel]);
            const double high = input - second[channel];
            const double v1 = a1 * first[channel] + a2 * high;
            const double v2 = second[channel] + a2 * first[channel] + a3 * high;
            first[channel] = 2 * v1 - first[channel];
            second[channel] = 2 * v2 - second[channel];
            stereo[i + channel] = static_cast<float>(input + mix * v1);
        }
}

}  // namespace quillet
