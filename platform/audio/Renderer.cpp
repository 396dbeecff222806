#include "platform/audio/Renderer.h"

#include "platform/audio/Ramp.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quillet {
namespace {

/// Frames rendered in one step; small, so that a change or a new run is noticed soon.
constexpr std::int64_t stepFrames = 256;
/// Room below which a step is not worth while.
constexpr std::int64_t minStep = 64;
/// Of a run, to be in the source's ring before it is begun.
constexpr std::int64_t sourceFramesNeeded = 1024;

/// To be in the output ring before a run is entered.
constexpr double bypassStartSeconds = 0.0116;
constexpr double stretchedStartSeconds = 0.0232;

constexpr double riseSeconds = 0.002;
constexpr double fallSeconds = 0.003;
constexpr double crossToStretchedSeconds = 0.0058;
constexpr double crossToBypassSeconds = 0.02;
constexpr double crossRenewedSeconds = 0.0087;

/// How far off, in frames of the stream, a place may be that follows from the one before.
constexpr double placeTolerance = 0.5;

/// In the order of runs, and of the passes of each.
std::uint64_t releaseWord(std::int64_t generation, std::int64_t pass)
{
    return static_cast<std::uint64_t>(generation) << 32 | static_cast<std::uint32_t>(pass);
}

}  // namespace

Renderer::Renderer(OutputStage& output, std::function<void()> sourceConsumed)
    : m_output(output),
      m_source(std::move(sourceConsumed)),
      m_block(2 * stepFrames),
      m_other(2 * stepFrames)
{
}

// ---- Runs ----

void Renderer::begin(std::shared_ptr<Run> run)
{
    m_next = std::move(run);
    if (m_next == nullptr) {
        m_ended = true;
        m_source.begin(nullptr);
    }
}

/// Goes over to the run that waits, if its source has delivered.
bool Renderer::beginNext()
{
    if (m_next == nullptr)
        return !m_ended;
    // Read before the frames: an end is pushed before the frames around it.
    const bool isShort = m_next->passEnds.front() != nullptr;
    if (!isShort && m_next->ring.available() < m_next->leadFrames + sourceFramesNeeded)
        return !m_ended;
    if (m_output.marks().isFull())
        return false;
    beginRun(std::move(m_next));
    return true;
}

void Renderer::beginRun(std::shared_ptr<Run> run)
{
    m_ended = false;
    m_blend = {};
    // A run that goes on from another may begin in a pass of a speed of its own.
    m_own = run->pass(0).pass.own;
    m_pass = 0;
    m_noted.reset();
    m_settingsJoint = false;
    m_beginOutput = m_output.ring().written();
    m_leg = { .pauseLeft = run->start.pauseFrames };
    m_source.begin(std::move(run));
    m_source.fetch(0);
    pushMark(OutputMark::Kind::runBegin, m_beginOutput);
    if (m_leg.pauseLeft > 0)
        notePlace(m_beginOutput, 0, 0);
}

void Renderer::beginLeg()
{
    m_leg.isBegun = true;
    m_path = &m_bypass;
    m_bypass.begin(m_leg.startFrame);
    if (settings() != TimeStretcher::Settings{})
        m_path = &startStretched(m_leg.startFrame, false);
}

// ---- Settings ----

void Renderer::release(std::int64_t generation, std::int64_t pass)
{
    m_released.store(releaseWord(generation, pass), std::memory_order_relaxed);
}

/// Of that pass of the run.
TimeStretcher::Settings Renderer::settingsOf(std::int64_t pass, const PassSettings& own) const
{
    const std::uint64_t released = m_released.load(std::memory_order_relaxed);
    const std::int64_t generation = m_source.run() != nullptr ? m_source.run()->generation : 0;
    const bool isReleased = released >= releaseWord(generation, pass) && released < releaseWord(generation + 1, 0);
    const auto choose = [isReleased](const std::optional<double>& itsOwn, const std::atomic<double>& common) {
        return itsOwn && !isReleased ? *itsOwn : common.load(std::memory_order_relaxed);
    };
    TimeStretcher::Settings settings;
    settings.rate = choose(own.rate, m_rate);
    settings.pitchCents = choose(own.pitchCents, m_pitchCents);
    settings.keepsFormants = settings.pitchCents != 0 && m_keepsFormants.load(std::memory_order_relaxed);
    return settings;
}

std::int64_t Renderer::frames(double seconds) const
{
    return std::max<std::int64_t>(1, std::llround(seconds * m_source.run()->sampleRate));
}

/// Takes up changes of speed, pitch and gains, and begins to cross over where another path or another stretcher comes in.
void Renderer::followSettings()
{
    if (m_blend.from != nullptr)
        return;
    const TimeStretcher::Settings wanted = settings();
    const bool atSettingsJoint = std::exchange(m_settingsJoint, false);
    const std::int64_t position = std::llround(m_path->position());
    if (wanted == TimeStretcher::Settings{}) {
        if (m_path == &m_bypass)
            return;
        m_bypass.begin(position);
        crossTo(m_bypass, crossToBypassSeconds);
    } else if (m_path == &m_bypass) {
        crossTo(startStretched(position, false), crossToStretchedSeconds);
    } else {
        const bool gainsMove = m_stretched->wantsRenewal();
        if (gainsMove || atSettingsJoint)
            crossTo(startStretched(position, gainsMove), crossRenewedSeconds);
        else
            m_stretched->setSettings(wanted);
    }
}

/// The spare stretcher, begun at `position`; the other one becomes the spare.
StretchedPath& Renderer::startStretched(std::int64_t position, bool gainsMove)
{
    const int sampleRate = m_source.run()->sampleRate;
    if (m_stretchedRate != sampleRate) {
        m_stretchedRate = sampleRate;
        m_stretched = std::make_unique<StretchedPath>(m_source, sampleRate);
        m_spare = std::make_unique<StretchedPath>(m_source, sampleRate);
    }
    std::swap(m_stretched, m_spare);
    m_stretched->begin(position, settings(), gainsMove);
    return *m_stretched;
}

void Renderer::crossTo(SoundPath& path, double seconds)
{
    m_blend = { m_path, 0, frames(seconds) };
    m_path = &path;
}

void Renderer::prepareSpare(int sampleRate)
{
    if (m_blend.from != nullptr)
        return;
    if (m_stretchedRate != sampleRate) {
        // While a run sounds its stretchers stay; a run of another rate comes with a new beginning.
        if (!m_ended)
            return;
        m_stretchedRate = sampleRate;
        m_stretched = std::make_unique<StretchedPath>(m_source, sampleRate);
        m_spare = std::make_unique<StretchedPath>(m_source, sampleRate);
    }
    m_spare->prepare(settings());
}

// ---- Steps ----

bool Renderer::step()
{
    if (!beginNext())
        return false;
    const std::int64_t free = room();
    if (free < minStep)
        return false;
    if (m_leg.pauseLeft > 0)
        return renderPause(free) > 0;
    if (!m_leg.isBegun)
        beginLeg();
    followSettings();
    const std::int64_t limit = untilSettingsChange(std::min(free, stepFrames));
    const auto block = std::span(m_block).first(static_cast<std::size_t>(2 * limit));
    const double position = m_path->position();
    const double slope = m_path->slope();
    const std::int64_t count = m_blend.from != nullptr ? renderBlend(block) : m_path->render(block);
    const auto end = m_source.legEnd();
    // Counted from the path, which stands after the block.
    const std::int64_t framesLeft = end ? m_path->framesTo(*end, frames(fallSeconds)) : frames(fallSeconds);
    const auto rendered = block.first(static_cast<std::size_t>(2 * count));
    shapeEdges(rendered, framesLeft);
    emit(rendered, position, slope);
    if (end && framesLeft == 0)
        return endLeg();
    return count > 0;
}

/// Frames to render before the ring is as full as it is to be.
std::int64_t Renderer::room()
{
    const AudioRing& ring = m_output.ring();
    const std::int64_t consumed = ring.consumed();
    std::int64_t entry = std::max(consumed, m_beginOutput);
    // A run that goes on from the one that still sounds is entered as far along as that is by then.
    if (const auto aligned = m_source.run()->start.alignedFrame; aligned && consumed < m_beginOutput)
        entry += std::max<std::int64_t>(0, consumed - *aligned);
    const double slope = m_leg.isBegun ? m_path->slope() : settings().rate;
    const std::int64_t target = m_fill.target(slope, m_source.run()->sampleRate, { m_output.maxBlock(), m_output.underruns() });
    return std::min(target - (ring.written() - entry), ring.space());
}

/// At most `limit`: a block ends where a pass of another speed or pitch begins.
std::int64_t Renderer::untilSettingsChange(std::int64_t limit) const
{
    const PassEnd* end = m_source.nextPassEnd();
    if (end == nullptr || settingsOf(m_pass + 1, end->nextOwn) == settings())
        return limit;
    return std::max<std::int64_t>(1, m_path->framesTo(end->frame, limit));
}

std::int64_t Renderer::renderPause(std::int64_t room)
{
    const std::int64_t count = std::min({ room, stepFrames, m_leg.pauseLeft });
    std::fill_n(m_block.begin(), 2 * count, 0.0F);
    m_output.ring().write(std::span(m_block).first(static_cast<std::size_t>(2 * count)));
    m_leg.pauseLeft -= count;
    return count;
}

/// Renders both paths and crosses over from the one to the other.
std::int64_t Renderer::renderBlend(std::span<float> stereo)
{
    const std::int64_t wanted = std::min(static_cast<std::int64_t>(stereo.size()) / 2, m_blend.frames - m_blend.at);
    const std::int64_t count = m_path->render(stereo.first(static_cast<std::size_t>(2 * wanted)));
    const auto other = std::span(m_other).first(static_cast<std::size_t>(2 * count));
    std::int64_t done = 0;
    while (done < count) {
        const std::int64_t got = m_blend.from->render(other.subspan(static_cast<std::size_t>(2 * done)));
        if (got == 0)
            break;
        done += got;
    }
    std::fill(other.begin() + 2 * done, other.end(), 0.0F);
    for (std::int64_t i = 0; i < count; ++i) {
        const float rising = rampWeight(m_blend.at + i, m_blend.frames);
        for (auto sample = static_cast<std::size_t>(2 * i); sample < static_cast<std::size_t>(2 * i + 2); ++sample)
            stereo[sample] = stereo[sample] * rising + other[sample] * (1 - rising);
    }
    m_blend.at += count;
    if (m_blend.at == m_blend.frames)
        m_blend = {};
    return count;
}

/// Ramps the leg's first milliseconds, if it comes after a silence, and its last ones; `framesToEnd` are left after the block.
void Renderer::shapeEdges(std::span<float> stereo, std::int64_t framesToEnd)
{
    const std::int64_t count = static_cast<std::int64_t>(stereo.size()) / 2;
    const std::int64_t rise = m_leg.isFirst ? 0 : frames(riseSeconds);
    const std::int64_t fall = frames(fallSeconds);
    for (std::int64_t i = 0; i < count; ++i) {
        const float weight = rampWeight(m_leg.rendered + i, rise) * rampWeight(framesToEnd + count - 1 - i, fall);
        if (weight == 1)
            continue;
        stereo[static_cast<std::size_t>(2 * i)] *= weight;
        stereo[static_cast<std::size_t>(2 * i + 1)] *= weight;
    }
    m_leg.rendered += count;
}

/// Writes the block, with the ends of passes within it; `position` is the stream frame of its first frame.
void Renderer::emit(std::span<const float> stereo, double position, double slope)
{
    const std::int64_t count = static_cast<std::int64_t>(stereo.size()) / 2;
    if (count == 0)
        return;
    AudioRing& ring = m_output.ring();
    const std::int64_t first = ring.written();
    notePlace(first, position, slope);
    while (const PassEnd* end = m_source.nextPassEnd()) {
        if (end->last || end->pauseFrames > 0)
            break;
        const double ahead = std::ceil((static_cast<double>(end->frame) - position) / slope - 1e-6);
        if (ahead > static_cast<double>(count)
            || !pushMark(OutputMark::Kind::passEnd, first + static_cast<std::int64_t>(std::max(0.0, ahead))))
            break;
        beginPass(end->nextOwn);
    }
    ring.write(stereo);
    m_fill.rendered(count);
}

/// The leg is rendered to its end: what follows is a silence, or nothing. False where there is nothing to do now.
bool Renderer::endLeg()
{
    const PassEnd* end = m_source.nextPassEnd();
    const std::int64_t written = m_output.ring().written();
    if (end == nullptr || !pushMark(end->last ? OutputMark::Kind::runEnd : OutputMark::Kind::passEnd, written))
        return false;
    m_blend = {};
    notePlace(written, static_cast<double>(end->frame), 0);
    if (end->last) {
        m_ended = true;
        return m_next != nullptr;
    }
    m_leg = { .isFirst = false, .startFrame = end->frame, .pauseLeft = end->pauseFrames };
    beginPass(end->nextOwn);
    m_settingsJoint = false;
    return true;
}

/// The next pass, from the end on that comes next.
void Renderer::beginPass(PassSettings own)
{
    const TimeStretcher::Settings before = settings();
    ++m_pass;
    m_own = own;
    m_settingsJoint |= settings() != before;
    m_source.passNextEnd();
}

// ---- Marks ----

/// False when the queue is full, as it is when the output has stood still for long.
bool Renderer::pushMark(OutputMark::Kind kind, std::int64_t outputFrame)
{
    const Run& run = *m_source.run();
    OutputMark mark{ .kind = kind, .outputFrame = outputFrame, .generation = run.generation };
    if (kind == OutputMark::Kind::runBegin) {
        const bool stretched = settings() != TimeStretcher::Settings{};
        mark.framesNeeded = frames(stretched ? stretchedStartSeconds : bypassStartSeconds);
        mark.sampleRate = run.sampleRate;
        mark.alignedFrame = run.start.alignedFrame.value_or(-1);
    }
    return m_output.marks().push(mark);
}

/// Tells the main thread of a place that does not follow from the ones before. One that finds no room is told with the next
/// block.
void Renderer::notePlace(std::int64_t outputFrame, double position, double slope)
{
    const MapPiece piece{ static_cast<double>(outputFrame), position, slope };
    if (m_noted && m_noted->slope == slope && std::abs(m_noted->sourceAt(piece.output) - position) < placeTolerance)
        return;
    if (m_output.places().push({ m_source.run()->generation, piece }))
        m_noted = piece;
}

}  // namespace quillet
