#include "platform/audio/TimeStretcher.h"

#include "platform/audio/Resampler.h"
#include "platform/base/VectorRegisters.h"

#include <rubberband/RubberBandStretcher.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace quillet {
namespace {

using RubberBand::RubberBandStretcher;

/// High consistency keeps the start delay true while the pitch changes.
constexpr RubberBandStretcher::Options stretcherOptions = RubberBandStretcher::OptionProcessRealTime
    | RubberBandStretcher::OptionEngineFiner | RubberBandStretcher::OptionPitchHighConsistency
    | RubberBandStretcher::OptionChannelsTogether | RubberBandStretcher::OptionThreadingNever;

constexpr int maxStretchedRate = 48000;
/// How much later than its start delay a change is heard, measured with a chirp through some thousand changes; at a half window
/// of 2048 frames.
constexpr double changeDelayFrames = 50;

double pitchScale(const TimeStretcher::Settings& settings) { return std::exp2(settings.pitchCents / 1200); }

/// Before 3.3 Rubber Band lets the sides drift apart, which widens the image by 3.5 dB at half speed; the middle and the sides
/// in place of left and right keep it, and a song that is all on one side stays there to the bit.
bool stretchesMiddleAndSides()
{
    static const bool answer = std::strtod(RUBBERBAND_VERSION, nullptr) < 3.25;
    return answer;
}

}  // namespace

struct TimeStretcher::Engine {
    Engine(int sampleRate, int factor)
        : stretcher(static_cast<std::size_t>(sampleRate / factor), 2, stretcherOptions),
          first(static_cast<std::size_t>(maxBlock)),
          second(static_cast<std::size_t>(maxBlock))
    {
        stretcher.setMaxProcessSize(static_cast<std::size_t>(maxBlock));
        if (factor == 1)
            return;
        down = std::make_unique<Resampler>(sampleRate, sampleRate / factor);
        up = std::make_unique<Resampler>(sampleRate / factor, sampleRate);
    }

    void apply(const Settings& settings)
    {
        stretcher.setTimeRatio(1 / settings.rate);
        stretcher.setPitchScale(pitchScale(settings));
        stretcher.setFormantOption(settings.keepsFormants ? RubberBandStretcher::OptionFormantPreserved
                                                          : RubberBandStretcher::OptionFormantShifted);
    }

    void process(std::span<const float> stereo)
    {
        const std::size_t frames = stereo.size() / 2;
        const bool middle = stretchesMiddleAndSides();
        for (std::size_t i = 0; i < frames; ++i) {
            const float left = stereo[2 * i];
            const float right = stereo[2 * i + 1];
            first[i] = middle ? (left + right) * 0.5F : left;
            second[i] = middle ? (left - right) * 0.5F : right;
        }
        const std::array<const float*, 2> channels{ first.data(), second.data() };
        emptyUpperVectorHalves();
        stretcher.process(channels.data(), frames, false);
    }

    std::int64_t retrieve(std::span<float> stereo)
    {
        const std::int64_t frames = std::min<std::int64_t>(static_cast<std::int64_t>(stereo.size()) / 2, stretcher.available());
        if (frames <= 0)
            return 0;
        const std::array<float*, 2> channels{ first.data(), second.data() };
        const std::size_t count = stretcher.retrieve(channels.data(), static_cast<std::size_t>(frames));
        const bool middle = stretchesMiddleAndSides();
        for (std::size_t i = 0; i < count; ++i) {
            stereo[2 * i] = middle ? first[i] + second[i] : first[i];
            stereo[2 * i + 1] = middle ? first[i] - second[i] : second[i];
        }
        return static_cast<std::int64_t>(count);
    }

    RubberBandStretcher stretcher;
    std::vector<float> first, second;
    std::unique_ptr<Resampler> down, up;
};

TimeStretcher::TimeStretcher(int sampleRate)
    : m_factor((sampleRate + maxStretchedRate - 1) / maxStretchedRate)
{
    // Rates that are no multiple are those that no device has; they are stretched as they are.
    if (sampleRate % m_factor != 0)
        m_factor = 1;
    m_engine = std::make_unique<Engine>(sampleRate, static_cast<int>(m_factor));
    m_halfWindow = static_cast<std::int64_t>(m_engine->stretcher.getPreferredStartPad());
}

TimeStretcher::~TimeStretcher() = default;

void TimeStretcher::reset(const Settings& settings)
{
    m_settings = settings;
    m_engine->apply(settings);
    if (m_isReset)
        return;
    m_isReset = true;
    m_engine->stretcher.reset();
    if (m_engine->down != nullptr) {
        m_engine->down->reset();
        m_engine->up->reset();
    }
}

void TimeStretcher::begin(std::int64_t position, const Settings& settings, const Source& source)
{
    reset(settings);
    m_isReset = false;
    const auto& stretcher = m_engine->stretcher;
    const std::int64_t pad = static_cast<std::int64_t>(stretcher.getPreferredStartPad()) * m_factor;
    m_drop = static_cast<std::int64_t>(stretcher.getStartDelay());
    m_begin = position;
    m_fed = -pad / m_factor;
    m_madeFrames = 0;
    m_retrieved = 0;
    m_finished.clear();
    m_taken = 0;
    m_map.reset({ 0, static_cast<double>(position), settings.rate });
    std::array<float, 2 * maxBlock> block;
    for (m_nextFrame = position - pad; m_nextFrame < position;) {
        const auto feeding = std::span(block).first(static_cast<std::size_t>(2 * std::min(position - m_nextFrame, maxBlock)));
        source(m_nextFrame, feeding);
        feed(feeding);
    }
}

void TimeStretcher::setSettings(const Settings& settings)
{
    if (settings == m_settings)
        return;
    const auto required = static_cast<std::int64_t>(m_engine->stretcher.getSamplesRequired());
    m_engine->apply(settings);
    if (settings.pitchCents != m_settings.pitchCents) {
        // Pitch is made last, by resampling what is stretched: it changes at once, and takes with it what was stretched for the
        // pitch before.
        m_map.hasten(static_cast<double>((m_madeFrames - m_drop) * m_factor), pitchScale(settings) / pitchScale(m_settings));
    }
    m_settings = settings;
    anchor(required);
}

/// Notes where the change of just now will be heard: `required` is what the engine asked for before it, and nothing finished is
/// left in it. Measured through thousands of changes (median of the error 0.6 ms, 2.4 ms in nine of ten, of source time).
void TimeStretcher::anchor(std::int64_t required)
{
    const double delay =
        static_cast<double>(m_engine->stretcher.getStartDelay()) + changeDelayFrames * static_cast<double>(m_halfWindow) / 2048;
    const auto factor = static_cast<double>(m_factor);
    m_map.append({ (static_cast<double>(m_madeFrames) + delay - static_cast<double>(m_drop)) * factor,
                   static_cast<double>(m_begin) + static_cast<double>(m_fed + required - m_halfWindow) * factor,
                   m_settings.rate });
}

std::int64_t TimeStretcher::wantedFrames() const
{
    const auto required = static_cast<std::int64_t>(m_engine->stretcher.getSamplesRequired());
    return std::clamp<std::int64_t>(required * m_factor, 1, maxBlock);
}

void TimeStretcher::feed(std::span<const float> stereo)
{
    m_nextFrame += static_cast<std::int64_t>(stereo.size()) / 2;
    if (m_engine->down == nullptr) {
        stretch(stereo);
        return;
    }
    m_scratch.resize(2 * maxBlock);
    while (true) {
        const auto [taken, made] = m_engine->down->process(stereo, m_scratch);
        stereo = stereo.subspan(static_cast<std::size_t>(2 * taken));
        if (made > 0)
            stretch(std::span(m_scratch).first(static_cast<std::size_t>(2 * made)));
        if (stereo.empty() && made < maxBlock)
            break;
    }
}

void TimeStretcher::stretch(std::span<const float> stereo)
{
    m_engine->process(stereo);
    m_fed += static_cast<std::int64_t>(stereo.size()) / 2;
    takeFinished();
}

void TimeStretcher::takeFinished()
{
    std::array<float, 2 * maxBlock> block;
    while (const std::int64_t count = m_engine->retrieve(block)) {
        const std::int64_t dropped = std::clamp<std::int64_t>(m_drop - m_madeFrames, 0, count);
        m_madeFrames += count;
        finish(std::span(block).first(static_cast<std::size_t>(2 * count)).subspan(static_cast<std::size_t>(2 * dropped)));
    }
}

void TimeStretcher::finish(std::span<const float> stereo)
{
    if (m_taken > 0) {
        m_finished.erase(m_finished.begin(), m_finished.begin() + static_cast<std::ptrdiff_t>(m_taken));
        m_taken = 0;
    }
    if (m_engine->up == nullptr) {
        m_finished.insert(m_finished.end(), stereo.begin(), stereo.end());
        return;
    }
    while (!stereo.empty()) {
        std::array<float, 2 * maxBlock> wide;
        const auto [taken, made] = m_engine->up->process(stereo, wide);
        stereo = stereo.subspan(static_cast<std::size_t>(2 * taken));
        m_finished.insert(m_finished.end(), wide.begin(), wide.begin() + 2 * made);
    }
}

std::int64_t TimeStretcher::retrieve(std::span<float> stereo)
{
    const std::size_t count = std::min(stereo.size(), m_finished.size() - m_taken);
    std::copy_n(m_finished.begin() + static_cast<std::ptrdiff_t>(m_taken), count, stereo.begin());
    m_taken += count;
    m_retrieved += static_cast<std::int64_t>(count) / 2;
    m_map.forgetBefore(static_cast<double>(m_retrieved));
    return static_cast<std::int64_t>(count) / 2;
}

std::int64_t TimeStretcher::framesToChange(std::int64_t limit) const
{
    const auto now = static_cast<double>(m_retrieved);
    const double frames = std::ceil(m_map.endOfPiece(now) - now);
    return frames < static_cast<double>(limit) ? static_cast<std::int64_t>(frames) : limit;
}

std::int64_t TimeStretcher::framesTo(double frame, std::int64_t limit) const
{
    const auto now = static_cast<double>(m_retrieved);
    const double frames = std::ceil(m_map.outputAt(frame, now) - now - 1e-6);
    return frames < static_cast<double>(limit) ? static_cast<std::int64_t>(frames) : limit;
}

}  // namespace quillet
