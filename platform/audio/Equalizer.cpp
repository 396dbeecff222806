#include "platform/audio/Equalizer.h"

#include <algorithm>
#include <cmath>

namespace quillet {
namespace {

/// While a gain glides its filter is worked out once in this time, and goes straight from one to the next in between. A glide
/// takes 94 steps: 34 ms.
constexpr double stepSeconds = 0.000363;

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
        if (!m_bells[i].isFlat() || m_targetDb[i].load(std::memory_order_relaxed) != 0)
            return true;
    return false;
}

void Equalizer::process(std::span<float> stereo) QUILLET_REALTIME
{
    takeSampleRate();
    if (!isActive())
        return;
    const auto stepFrames = static_cast<std::size_t>(std::max(1L, std::lround(stepSeconds * m_sampleRate)));
    while (!stereo.empty()) {
        if (m_framesLeftInStep == 0) {
            for (std::size_t i = 0; i < m_bells.size(); ++i) {
                m_bells[i].takeTarget(m_targetDb[i].load(std::memory_order_relaxed));
                m_bells[i].beginStep(stepFrames);
            }
            m_framesLeftInStep = stepFrames;
        }
        const std::size_t frames = std::min(m_framesLeftInStep, stereo.size() / 2);
        for (Bell& bell : m_bells)
            if (!bell.isFlat())
                bell.process(stereo.first(2 * frames));
        m_framesLeftInStep -= frames;
        stereo = stereo.subspan(2 * frames);
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
    m_framesLeftInStep = 0;
    for (std::size_t i = 0; i < m_bells.size(); ++i)
        m_bells[i].start(EqualizerBand(EqualizerNode::frequenciesHz[i], m_sampleRate),
                         first ? m_targetDb[i].load(std::memory_order_relaxed) : m_bells[i].targetDb);
}

void Equalizer::Glide::jumpTo(double gain) QUILLET_REALTIME
{
    m_target = std::llround(gain * static_cast<double>(unity));
    m_first = MovingSum<meanSteps>(m_target);
    m_second = MovingSum<meanSteps>(m_target * scale);
    m_third = MovingSum<meanSteps>(m_target * scale * scale);
    m_gain = gain;
    m_stepsLeft = 0;
}

void Equalizer::Glide::aimAt(double gain) QUILLET_REALTIME
{
    m_target = std::llround(gain * static_cast<double>(unity));
    m_stepsLeft = 3 * static_cast<int>(meanSteps) - 2;
}

void Equalizer::Glide::step() QUILLET_REALTIME
{
    const std::int64_t sum = m_third.next(m_second.next(m_first.next(m_target)));
    m_gain = static_cast<double>(sum) / static_cast<double>(unity * scale * scale * scale);
    --m_stepsLeft;
}

/// Starts from silence, at a gain that does not glide.
void Equalizer::Bell::start(const EqualizerBand& ofBand, double decibels) QUILLET_REALTIME
{
    band = ofBand;
    targetDb = band.active ? decibels : 0;
    glide.jumpTo(std::pow(10.0, targetDb / 20));
    first = second = {};
    takeCoefficients();
}

void Equalizer::Bell::takeTarget(double decibels) QUILLET_REALTIME
{
    if (!band.active)
        decibels = 0;
    if (decibels == targetDb)
        return;
    if (isFlat())
        first = second = {};
    targetDb = decibels;
    glide.aimAt(std::pow(10.0, decibels / 20));
}

void Equalizer::Bell::beginStep(std::size_t frames) QUILLET_REALTIME
{
    a1 = endA1;
    mix = endMix;
    slopeA1 = slopeMix = 0;
    if (!glide.isMoving())
        return;
    glide.step();
    takeCoefficients();
    slopeA1 = (endA1 - a1) / static_cast<double>(frames);
    slopeMix = (endMix - mix) / static_cast<double>(frames);
}

void Equalizer::Bell::takeCoefficients() QUILLET_REALTIME
{
    const double damping = band.inverseQ / std::sqrt(glide.gain());
    endA1 = 1 / (1 + band.warpedCentre * (band.warpedCentre + damping));
    endMix = damping * (glide.gain() - 1);
}

void Equalizer::Bell::process(std::span<float> stereo) QUILLET_REALTIME
{
    for (std::size_t i = 0; i + 1 < stereo.size(); i += 2) {
        a1 += slopeA1;
        mix += slopeMix;
        const double a2 = band.warpedCentre * a1;
        const double a3 = band.warpedCentre * a2;
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
    // A file may hold numbers that are none, and one of them would ring for ever.
    for (std::size_t channel = 0; channel < 2; ++channel)
        if (!std::isfinite(first[channel]) || !std::isfinite(second[channel]))
            first[channel] = second[channel] = 0;
}

}  // namespace quillet
