#include "platform/audio/TimeStretcher.h"

#include <rubberband/RubberBandStretcher.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace quillet {
namespace {

using RubberBand::RubberBandStretcher;

/// High consistency keeps the start delay true while the pitch changes.
constexpr RubberBandStretcher::Options stretcherOptions = RubberBandStretcher::OptionProcessRealTime
    | RubberBandStretcher::OptionEngineFiner | RubberBandStretcher::OptionPitchHighConsistency
    | RubberBandStretcher::OptionChannelsTogether | RubberBandStretcher::OptionThreadingNever;

}  // namespace

struct TimeStretcher::Engine {
    explicit Engine(int sampleRate)
        : stretcher(static_cast<std::size_t>(sampleRate), 2, stretcherOptions),
          left(static_cast<std::size_t>(maximumBlock)),
          right(static_cast<std::size_t>(maximumBlock))
    {
        stretcher.setMaxProcessSize(static_cast<std::size_t>(maximumBlock));
    }

    RubberBandStretcher stretcher;
    std::vector<float> left, right;
};

TimeStretcher::TimeStretcher(int sampleRate)
    : m_engine(std::make_unique<Engine>(sampleRate))
{
}

TimeStretcher::~TimeStretcher() = default;

void TimeStretcher::setRate(double rate)
{
    const double ratio = 1 / rate;
    if (m_engine->stretcher.getTimeRatio() != ratio)
        m_engine->stretcher.setTimeRatio(ratio);
}

void TimeStretcher::setPitch(double pitchCents)
{
    if (m_pitchCents == pitchCents)
        return;
    m_pitchCents = pitchCents;
    m_engine->stretcher.setPitchScale(std::exp2(pitchCents / 1200));
}

void TimeStretcher::reset() { m_engine->stretcher.reset(); }

std::int64_t TimeStretcher::startPad() const { return static_cast<std::int64_t>(m_engine->stretcher.getPreferredStartPad()); }

std::int64_t TimeStretcher::startDelay() const { return static_cast<std::int64_t>(m_engine->stretcher.getStartDelay()); }

std::int64_t TimeStretcher::wantedFrames() const
{
    return std::clamp<std::int64_t>(static_cast<std::int64_t>(m_engine->stretcher.getSamplesRequired()), 1, maximumBlock);
}

void TimeStretcher::feed(std::span<const float> stereo)
{
    const std::size_t frames = stereo.size() / 2;
    for (std::size_t i = 0; i < frames; ++i) {
        m_engine->left[i] = stereo[2 * i];
        m_engine->right[i] = stereo[2 * i + 1];
    }
    const std::array<const float*, 2> channels{ m_engine->left.data(), m_engine->right.data() };
    m_engine->stretcher.process(channels.data(), frames, false);
}

std::int64_t TimeStretcher::retrieve(std::span<float> stereo)
{
    const std::int64_t wanted = std::min(static_cast<std::int64_t>(stereo.size()) / 2, maximumBlock);
    const std::int64_t frames = std::min<std::int64_t>(wanted, m_engine->stretcher.available());
    if (frames <= 0)
        return 0;
    const std::array<float*, 2> channels{ m_engine->left.data(), m_engine->right.data() };
    const auto count =
        static_cast<std::size_t>(m_engine->stretcher.retrieve(channels.data(), static_cast<std::size_t>(frames)));
    for (std::size_t i = 0; i < count; ++i) {
        stereo[2 * i] = m_engine->left[i];
        stereo[2 * i + 1] = m_engine->right[i];
    }
    return static_cast<std::int64_t>(count);
}

}  // namespace quillet
