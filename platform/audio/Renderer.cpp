#include "platform/audio/Renderer.h"

#include "platform/audio/Ramp.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quillet {
namespace {

/// Frames rendered in one step; small, so that a change or a new take is noticed soon.
constexpr std::int64_t stepFrames = 256;
/// Room below which a step is not worth while.
constexpr std::int64_t smallestStep = 64;
constexpr std::int64_t framesBetweenMarks = 1024;

// All of these at 44.1 kHz.
constexpr double fillAtNormalSpeed = 2048;
constexpr double fillAtHighSpeed = 8192;
constexpr double fillAtHighSpeedInRealtime = 3072;
constexpr double cautionAfterUnderrun = 44100 * 30;
constexpr double dryStartFrames = 512;
constexpr double wetStartFrames = 1024;
constexpr double fadeInFrames = 88;
constexpr double fadeOutFrames = 132;
constexpr double blendToWetFrames = 256;
constexpr double blendToDryFrames = 882;
constexpr double blendRenewedFrames = 384;

constexpr double highSpeed = 1.5;

}  // namespace

Renderer::Renderer(OutputStage& output, std::function<void()> sourceConsumed)
    : m_output(output),
      m_source(std::move(sourceConsumed)),
      m_block(2 * stepFrames),
      m_other(2 * stepFrames),
      m_feed(2 * TimeStretcher::maximumBlock)
{
}

// ---- Render thread ----

void Renderer::begin(std::shared_ptr<Take> take)
{
    m_ended = take == nullptr;
    m_begun = false;
    m_source.begin(std::move(take));
    m_position = 0;
    m_rendered = 0;
    m_mode = wantsStretcher() ? Mode::wet : Mode::dry;
    if (m_source.take() != nullptr)
        m_source.readGains(m_dryGains);
}

bool Renderer::wantsStretcher() const
{
    return m_rate.load(std::memory_order_relaxed) != 1 || m_pitchCents.load(std::memory_order_relaxed) != 0;
}

std::int64_t Renderer::scaled(double framesAt44100) const
{
    return std::max<std::int64_t>(1, std::llround(framesAt44100 * m_source.take()->sampleRate / 44100));
}

/// How many frames the output ring is to hold: more where the stretcher's bursts are dear, and for a while after one came too
/// late.
std::int64_t Renderer::fillTarget()
{
    if (m_output.underruns() != m_seenUnderruns) {
        m_seenUnderruns = m_output.underruns();
        m_cautiousFrames = scaled(cautionAfterUnderrun);
    }
    if (m_cautiousFrames > 0)
        return scaled(fillAtHighSpeed);
    const double highest = m_priority == ThreadPriority::realtime ? fillAtHighSpeedInRealtime : fillAtHighSpeed;
    const double excess = std::clamp((m_slope - 1) / (highSpeed - 1), 0.0, 1.0);
    return scaled(fillAtNormalSpeed + excess * (highest - fillAtNormalSpeed));
}

bool Renderer::step()
{
    if (m_ended)
        return false;
    AudioRing& ring = m_output.ring();
    if (!m_begun && !beginOutput())
        return false;
    const std::int64_t filled = ring.written() - std::max(ring.consumed(), m_beginOutput);
    const std::int64_t room = std::min(fillTarget() - filled, ring.space());
    if (room < smallestStep)
        return false;
    followSettings();
    const double position = m_position;
    const auto block = std::span(m_block).first(static_cast<std::size_t>(2 * std::min(room, stepFrames)));
    const std::int64_t count = renderBlock(block);
    emit(block.first(static_cast<std::size_t>(2 * count)), position);
    if (framesToEnd(1) > 0)
        return count > 0;
    const auto joint = static_cast<std::int64_t>(static_cast<double>(m_source.jointAtEnd()) / m_slope);
    m_ended = pushMark(OutputMark::Kind::takeEnd, ring.written(), m_position, ring.written() - joint);
    return false;
}

/// Opens the take in the output ring; false when there is no room to say so.
bool Renderer::beginOutput()
{
    m_beginOutput = m_output.ring().written();
    m_slope = m_rate.load(std::memory_order_relaxed);
    m_begun = pushMark(OutputMark::Kind::takeBegin, m_beginOutput, 0);
    if (m_begun && m_mode == Mode::wet)
        startStretcher(0);
    return m_begun;
}

/// Takes up changes of speed and pitch, and begins to cross over where the stretcher comes in or goes out.
void Renderer::followSettings()
{
    m_source.obeyClosing(static_cast<std::int64_t>(m_position + static_cast<double>(scaled(fadeOutFrames)) * m_slope));
    const bool stretching = wantsStretcher();
    if (m_mode == Mode::dry && stretching) {
        beginBlend(Mode::toWet, blendToWetFrames);
        startStretcher(m_dryPosition);
    } else if (m_mode == Mode::wet && !stretching) {
        beginBlend(Mode::toDry, blendToDryFrames);
        m_dryGains = m_wetGains;
    } else if (m_mode == Mode::wet) {
        m_source.readGains(m_gainsNow);
        if (m_gainsNow != m_wetGains)
            renewStretcher();
    }
    if (m_mode == Mode::dry) {
        m_slope = 1;
        return;
    }
    m_slope = m_rate.load(std::memory_order_relaxed);
    m_stretcher->setRate(m_slope);
    m_stretcher->setPitch(m_pitchCents.load(std::memory_order_relaxed));
}

void Renderer::beginBlend(Mode mode, double framesAt44100)
{
    m_mode = mode;
    m_dryPosition = std::llround(m_position);
    m_blendAt = 0;
    m_blendFrames = scaled(framesAt44100);
}

/// A gain has changed: starts another stretcher at the present place, since this one holds a long stretch of sound with the old
/// gains (at slow speeds, seconds of it), and crosses over.
void Renderer::renewStretcher()
{
    const double position = m_position;
    m_tail.resize(static_cast<std::size_t>(2 * scaled(blendRenewedFrames)));
    const std::int64_t count = renderWet(m_tail);
    std::fill(m_tail.begin() + 2 * count, m_tail.end(), 0.0F);
    m_position = std::round(position);
    beginBlend(Mode::renewing, blendRenewedFrames);
    startStretcher(m_dryPosition);
}

void Renderer::makeStretchers(int sampleRate)
{
    m_stretcherRate = sampleRate;
    m_stretcher = std::make_unique<TimeStretcher>(sampleRate);
    m_spare = std::make_unique<TimeStretcher>(sampleRate);
    m_spareIsReset = true;
}

void Renderer::prepareSpare(int sampleRate)
{
    if (m_stretcherRate != sampleRate) {
        // While a take sounds its stretchers stay; a take of another rate comes with a new beginning.
        if (!m_ended && m_source.take()->sampleRate != sampleRate)
            return;
        makeStretchers(sampleRate);
    }
    m_spare->setPitch(m_pitchCents.load(std::memory_order_relaxed));
    m_spare->setRate(m_rate.load(std::memory_order_relaxed));
    if (!m_spareIsReset)
        m_spare->reset();
    m_spareIsReset = true;
}

/// Puts the spare stretcher to work so that its first frame of output is the source frame `position`.
void Renderer::startStretcher(std::int64_t position)
{
    if (m_stretcherRate != m_source.take()->sampleRate)
        makeStretchers(m_source.take()->sampleRate);
    if (!m_spareIsReset)
        m_spare->reset();
    std::swap(m_stretcher, m_spare);
    m_spareIsReset = false;
    m_stretcher->setRate(m_rate.load(std::memory_order_relaxed));
    m_stretcher->setPitch(m_pitchCents.load(std::memory_order_relaxed));
    m_drop = m_stretcher->startDelay();
    m_source.readGains(m_wetGains);
    const std::int64_t pad = m_stretcher->startPad();
    for (std::int64_t done = 0; done < pad;) {
        const std::int64_t count = std::min(pad - done, TimeStretcher::maximumBlock);
        const auto feed = std::span(m_feed).first(static_cast<std::size_t>(2 * count));
        m_source.mixSteady(position - pad + done, feed, m_wetGains);
        m_stretcher->feed(feed);
        done += count;
    }
    m_fed = position;
}

std::int64_t Renderer::renderBlock(std::span<float> stereo)
{
    switch (m_mode) {
    case Mode::dry:
        return renderDry(stereo);
    case Mode::wet:
        return renderWet(stereo);
    case Mode::toWet:
    case Mode::toDry:
    case Mode::renewing:
        return renderBlend(stereo);
    }
    return 0;
}

/// At most `limit`: the frames of output left before the take's end.
std::int64_t Renderer::framesToEnd(std::int64_t limit) const
{
    const auto end = m_source.end();
    if (!end)
        return limit;
    const double left = std::ceil((static_cast<double>(*end) - m_position) / m_slope - 1e-9);
    return std::clamp<std::int64_t>(static_cast<std::int64_t>(left), 0, limit);
}

std::int64_t Renderer::renderDry(std::span<float> stereo)
{
    const std::int64_t first = std::llround(m_position);
    const std::int64_t wanted = static_cast<std::int64_t>(stereo.size()) / 2;
    const std::int64_t ready = m_source.fetch(first + wanted) - first;
    const std::int64_t count = framesToEnd(std::clamp<std::int64_t>(ready, 0, wanted));
    m_source.mixGliding(first, stereo.first(static_cast<std::size_t>(2 * count)), m_dryGains);
    m_position = static_cast<double>(first + count);
    return count;
}

std::int64_t Renderer::renderWet(std::span<float> stereo)
{
    const std::int64_t wanted = static_cast<std::int64_t>(stereo.size()) / 2;
    std::int64_t count = 0;
    while (count < framesToEnd(wanted)) {
        const auto rest = stereo.subspan(static_cast<std::size_t>(2 * count), static_cast<std::size_t>(2 * (wanted - count)));
        if (m_drop > 0) {
            const auto dropped = rest.first(static_cast<std::size_t>(2 * std::min(m_drop, wanted - count)));
            const std::int64_t got = m_stretcher->retrieve(dropped);
            m_drop -= got;
            if (got == 0 && !feedStretcher())
                break;
            continue;
        }
        const std::int64_t left = framesToEnd(wanted - count);
        const std::int64_t got = m_stretcher->retrieve(rest.first(static_cast<std::size_t>(2 * left)));
        count += got;
        m_position += static_cast<double>(got) * m_slope;
        if (got == 0 && (left == 0 || !feedStretcher()))
            break;
    }
    return count;
}

/// Feeds the stretcher what it asks for, silence behind the take's end; false when the source has nothing yet.
bool Renderer::feedStretcher()
{
    const std::int64_t wanted = m_stretcher->wantedFrames();
    const std::int64_t ready = m_source.fetch(m_fed + wanted) - m_fed;
    const bool atEnd = m_source.end() && m_fed + ready >= *m_source.end();
    const std::int64_t count = atEnd ? wanted : std::min(ready, wanted);
    if (count <= 0)
        return false;
    const auto feed = std::span(m_feed).first(static_cast<std::size_t>(2 * count));
    m_source.mixSteady(m_fed, feed, m_wetGains);
    m_stretcher->feed(feed);
    m_fed += count;
    return true;
}

/// Renders both ways and crosses over from one to the other.
std::int64_t Renderer::renderBlend(std::span<float> stereo)
{
    const std::int64_t wanted = std::min(static_cast<std::int64_t>(stereo.size()) / 2, m_blendFrames - m_blendAt);
    const bool needsDry = m_mode != Mode::renewing;
    if (needsDry && m_source.fetch(m_dryPosition + wanted) < m_dryPosition + wanted && !m_source.end())
        return 0;
    const std::int64_t count = renderWet(stereo.first(static_cast<std::size_t>(2 * wanted)));
    const auto other = std::span(m_other).first(static_cast<std::size_t>(2 * count));
    if (needsDry)
        m_source.mixGliding(m_dryPosition, other, m_dryGains);
    else
        std::copy_n(m_tail.begin() + 2 * m_blendAt, other.size(), other.begin());
    for (std::int64_t i = 0; i < count; ++i) {
        const float rising = rampWeight(m_blendAt + i, m_blendFrames);
        const float wet = m_mode == Mode::toDry ? 1 - rising : rising;
        for (std::size_t sample = static_cast<std::size_t>(2 * i); sample < static_cast<std::size_t>(2 * i + 2); ++sample)
            stereo[sample] = stereo[sample] * wet + other[sample] * (1 - wet);
    }
    m_dryPosition += count;
    m_blendAt += count;
    if (m_blendAt == m_blendFrames) {
        if (m_mode == Mode::toDry)
            m_position = static_cast<double>(m_dryPosition);
        m_mode = m_mode == Mode::toDry ? Mode::dry : Mode::wet;
    }
    return count;
}

/// Ramps the take's first and last milliseconds; `position` is the source frame of the block's first frame.
void Renderer::shapeEdges(std::span<float> stereo, double position)
{
    const std::int64_t fadeIn = scaled(fadeInFrames);
    const std::int64_t fadeOut = scaled(fadeOutFrames);
    const auto end = m_source.end();
    const std::int64_t count = static_cast<std::int64_t>(stereo.size()) / 2;
    for (std::int64_t i = 0; i < count; ++i) {
        float weight = m_rendered + i < fadeIn ? rampWeight(m_rendered + i, fadeIn) : 1;
        if (end) {
            const double left = (static_cast<double>(*end) - position) / m_slope - static_cast<double>(i);
            if (left < static_cast<double>(fadeOut))
                weight *= rampWeight(std::max<std::int64_t>(0, static_cast<std::int64_t>(left)), fadeOut);
        }
        if (weight == 1)
            continue;
        stereo[static_cast<std::size_t>(2 * i)] *= weight;
        stereo[static_cast<std::size_t>(2 * i + 1)] *= weight;
    }
}

void Renderer::emit(std::span<float> stereo, double position)
{
    const std::int64_t count = static_cast<std::int64_t>(stereo.size()) / 2;
    if (count == 0)
        return;
    shapeEdges(stereo, position);
    AudioRing& ring = m_output.ring();
    const std::int64_t first = ring.written();
    // A position that finds no place among the marks is made up for by the next one.
    if (first - m_lastMark >= framesBetweenMarks || m_slope != m_markedSlope)
        static_cast<void>(pushMark(OutputMark::Kind::position, first, position));
    while (const auto end = m_source.nextPassEnd()) {
        const auto frame = static_cast<double>(end->frame);
        const double ahead = std::ceil((frame - position) / m_slope - 1e-9);
        if (ahead > static_cast<double>(count))
            break;
        const std::int64_t at = first + static_cast<std::int64_t>(std::max(0.0, ahead));
        const auto joint = static_cast<std::int64_t>(static_cast<double>(end->joint) / m_slope);
        if (!pushMark(OutputMark::Kind::passEnd, at, frame, at - joint))
            break;
        m_source.passNextEnd();
    }
    ring.write(stereo);
    m_rendered += count;
    m_cautiousFrames = std::max<std::int64_t>(0, m_cautiousFrames - count);
}

/// False when the queue is full, as it is when the output has stood still for long.
bool Renderer::pushMark(OutputMark::Kind kind, std::int64_t outputFrame, double position, std::int64_t cutFrame)
{
    const double needed = m_mode == Mode::dry ? dryStartFrames : wetStartFrames;
    if (!m_output.marks().push({ kind, outputFrame, m_source.take()->epoch, scaled(needed), cutFrame, position, m_slope }))
        return false;
    m_lastMark = outputFrame;
    m_markedSlope = m_slope;
    return true;
}

}  // namespace quillet
