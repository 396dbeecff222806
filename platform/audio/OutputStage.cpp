#include "platform/audio/OutputStage.h"

#include "platform/audio/Ramp.h"

#include <algorithm>
#include <chrono>

namespace quillet {
namespace {

/// Out of silence; into silence; from one run to the next.
constexpr double riseSeconds = 0.002;
constexpr double fallSeconds = 0.0045;
constexpr double crossSeconds = 0.008;

}  // namespace

OutputStage::OutputStage(WakeSemaphore& renderer)
    : m_renderer(renderer)
{
}

// ---- Audio thread ----

void OutputStage::render(std::span<float> stereo) QUILLET_REALTIME
{
    const RealtimeScope scope;
    const std::int64_t frames = static_cast<std::int64_t>(stereo.size()) / 2;
    if (frames > m_maxBlock.load(std::memory_order_relaxed))
        m_maxBlock.store(frames, std::memory_order_relaxed);
    fillBlock(stereo);
    m_equalizer.process(stereo);
    m_limiter.process(stereo, m_limiting.load(std::memory_order_relaxed));
    m_renderer.wake();
}

std::int64_t OutputStage::wantedGeneration() const QUILLET_REALTIME { return m_wanted.load(std::memory_order_acquire) >> 1; }

bool OutputStage::wantsRun() const QUILLET_REALTIME { return (m_wanted.load(std::memory_order_acquire) & 1) != 0; }

/// Fills the block with what is to be heard, and with silence where there is nothing.
void OutputStage::fillBlock(std::span<float> stereo) QUILLET_REALTIME
{
    const std::int64_t frames = static_cast<std::int64_t>(stereo.size()) / 2;
    bool moving = false;
    std::int64_t at = 0;
    followPause();
    while (at < frames) {
        passMarks();
        if (m_generation != wantedGeneration())
            followWanted(frames - at);
        if (m_dry && canGoOn(frames - at)) {
            m_dry = false;
            beginFadeIn(fade(riseSeconds));
        }
        if (!isAudible())
            break;
        const auto rest = stereo.subspan(static_cast<std::size_t>(2 * at));
        const std::int64_t copied = copyRun(rest);
        addTail(rest.first(static_cast<std::size_t>(2 * copied)));
        at += copied;
        moving |= copied > 0;
    }
    const auto silent = stereo.subspan(static_cast<std::size_t>(2 * at));
    std::ranges::fill(silent, 0.0F);
    addTail(silent);
    if (m_ended)
        m_framesSinceEnd += frames - at;
    reportProgress(moving && isAudible());
}

bool OutputStage::isAudible() const QUILLET_REALTIME { return !m_ended && !m_paused && !m_dry; }

std::int64_t OutputStage::fade(double seconds) const QUILLET_REALTIME
{
    return std::clamp<std::int64_t>(static_cast<std::int64_t>(seconds * m_sampleRate), 1, maxFade);
}

/// Takes up a pause, or its end.
void OutputStage::followPause() QUILLET_REALTIME
{
    const bool paused = m_generation != 0 && m_pausedGeneration.load(std::memory_order_acquire) == m_generation;
    if (paused == m_paused)
        return;
    if (isAudible())
        beginTail(fade(fallSeconds));
    m_paused = paused;
    if (!paused)
        beginFadeIn(fade(riseSeconds));
}

/// Goes over to what is wanted, if that is ready for a block of `frames`.
void OutputStage::followWanted(std::int64_t frames) QUILLET_REALTIME
{
    const std::int64_t wanted = wantedGeneration();
    if (!wantsRun()) {
        if (isAudible())
            beginTail(fade(fallSeconds));
        enterNothing(wanted);
        return;
    }
    const OutputMark* begin = beginOf(wanted);
    if (begin == nullptr || !canEnter(*begin, frames))
        return;
    enter(*begin);
}

const OutputMark* OutputStage::beginOf(std::int64_t generation) const QUILLET_REALTIME
{
    for (std::size_t i = 0;; ++i) {
        const OutputMark* mark = m_marks.peek(i);
        if (mark == nullptr || (mark->kind == OutputMark::Kind::runBegin && mark->generation == generation))
            return mark;
    }
}

bool OutputStage::knowsEndOf(std::int64_t generation) const QUILLET_REALTIME
{
    for (std::size_t i = 0;; ++i) {
        const OutputMark* mark = m_marks.peek(i);
        if (mark == nullptr)
            return false;
        if (mark->kind == OutputMark::Kind::runEnd && mark->generation == generation)
            return true;
    }
}

/// The place in the ring at which a run is entered now: one that goes on from the run that sounds is as far along as that is.
std::int64_t OutputStage::entryOf(const OutputMark& begin) const QUILLET_REALTIME
{
    if (begin.alignedFrame < 0)
        return begin.outputFrame;
    return begin.outputFrame + std::max<std::int64_t>(0, m_ring.consumed() - begin.alignedFrame);
}

bool OutputStage::canEnter(const OutputMark& begin, std::int64_t frames) const QUILLET_REALTIME
{
    return m_ring.written() - entryOf(begin) >= std::max(begin.framesNeeded, frames) || knowsEndOf(begin.generation);
}

/// Whether the run that sounds has what a block of `frames` takes; one that ran dry waits for as much as at its beginning.
bool OutputStage::canGoOn(std::int64_t frames) const QUILLET_REALTIME
{
    return framesOfRun() >= (m_dry ? std::max(m_framesNeeded, frames) : frames) || knowsEndOf(m_generation);
}

void OutputStage::enter(const OutputMark& begin) QUILLET_REALTIME
{
    const OutputMark run = begin;
    const bool crosses = isAudible();
    const std::int64_t tail = crosses ? beginTail(fade(crossSeconds)) : 0;
    while (m_marks.front()->kind != OutputMark::Kind::runBegin || m_marks.front()->generation != run.generation)
        m_marks.pop();
    m_marks.pop();
    const std::int64_t entry = std::min(entryOf(run), m_ring.written());
    m_ring.skipTo(entry);
    m_generation = run.generation;
    m_sampleRate = run.sampleRate;
    m_framesNeeded = run.framesNeeded;
    m_enteredFrame = entry;
    m_passesEnded = 0;
    m_framesSinceEnd = 0;
    m_ended = false;
    m_paused = m_pausedGeneration.load(std::memory_order_acquire) == run.generation;
    m_dry = false;
    m_hasNews = true;
    // What goes on where the other run is needs no more of a fade than there is of that run to cross from.
    beginFadeIn(run.alignedFrame >= 0 && crosses ? tail : std::max(tail, fade(riseSeconds)));
    passMarks();
}

void OutputStage::enterNothing(std::int64_t generation) QUILLET_REALTIME
{
    // Read before the marks: a run's mark is pushed before its frames, so no frame of a later run is dropped unseen.
    const std::int64_t written = m_ring.written();
    const OutputMark* mark = m_marks.front();
    while (mark != nullptr && mark->generation <= generation) {
        m_marks.pop();
        mark = m_marks.front();
    }
    m_ring.skipTo(mark == nullptr ? written : std::min(written, mark->outputFrame));
    m_generation = generation;
    m_ended = true;
    m_paused = false;
    m_dry = false;
    m_framesSinceEnd = 0;
    m_passesEnded = 0;
}

/// Frames of the run that sounds that are in the ring.
std::int64_t OutputStage::framesOfRun() const QUILLET_REALTIME
{
    std::int64_t end = m_ring.written();
    for (std::size_t i = 0;; ++i) {
        const OutputMark* mark = m_marks.peek(i);
        if (mark == nullptr)
            break;
        if (mark->generation == m_generation && mark->kind != OutputMark::Kind::runEnd)
            continue;
        end = std::min(end, mark->outputFrame);
        break;
    }
    return std::max<std::int64_t>(0, end - m_ring.consumed());
}

/// Copies up to the next mark or to the end of what there is.
std::int64_t OutputStage::copyRun(std::span<float> stereo) QUILLET_REALTIME
{
    const std::int64_t wanted = static_cast<std::int64_t>(stereo.size()) / 2;
    const std::int64_t available = framesOfRun();
    std::int64_t count = std::min(wanted, available);
    bool runsDry = available < wanted && !knowsEndOf(m_generation);
    // What another run is wanted for is left to cross over to it, if it is there by then.
    const std::int64_t crossing = fade(crossSeconds);
    if (runsDry && available > crossing && wantsRun() && wantedGeneration() != m_generation) {
        count = available - crossing;
        runsDry = false;
    }
    const OutputMark* next = m_marks.front();
    if (!runsDry && next != nullptr && next->generation == m_generation)
        count = std::min(count, next->outputFrame - m_ring.consumed());
    const auto copied = stereo.first(static_cast<std::size_t>(2 * count));
    m_ring.read(copied);
    for (std::int64_t i = 0; i < count && m_fadeAt < m_fadeFrames; ++i, ++m_fadeAt) {
        const float weight = rampWeight(m_fadeAt, m_fadeFrames);
        copied[static_cast<std::size_t>(2 * i)] *= weight;
        copied[static_cast<std::size_t>(2 * i + 1)] *= weight;
    }
    if (runsDry)
        runDry(copied);
    passMarks();
    return count;
}

/// `stereo` is all there is: its end fades, and the sound waits for more.
void OutputStage::runDry(std::span<float> stereo) QUILLET_REALTIME
{
    const std::int64_t count = static_cast<std::int64_t>(stereo.size()) / 2;
    const std::int64_t falling = std::min(count, fade(fallSeconds));
    for (std::int64_t i = 0; i < falling; ++i) {
        const float weight = 1 - rampWeight(i, falling);
        stereo[static_cast<std::size_t>(2 * (count - falling + i))] *= weight;
        stereo[static_cast<std::size_t>(2 * (count - falling + i) + 1)] *= weight;
    }
    m_dry = true;
    m_underruns.fetch_add(1, std::memory_order_relaxed);
}

void OutputStage::beginFadeIn(std::int64_t frames) QUILLET_REALTIME
{
    m_fadeAt = 0;
    m_fadeFrames = frames;
}

/// What comes next of the run that sounds becomes a tail that fades beside whatever is heard then; nothing is taken out of the
/// ring. How long it is: no longer than what there is.
std::int64_t OutputStage::beginTail(std::int64_t frames) QUILLET_REALTIME
{
    const std::int64_t count = std::min(frames, framesOfRun());
    const std::int64_t left = m_tailFrames - m_tailAt;
    // Moved to the front first: the old tail is read from where it is.
    std::copy_n(m_tail.begin() + 2 * m_tailAt, 2 * left, m_tail.begin());
    std::fill(m_tail.begin() + 2 * left, m_tail.end(), 0.0F);
    for (std::int64_t i = 0; i < count; ++i) {
        const std::span<const float> frame = m_ring.peek(i);
        const float weight = rampWeight(m_fadeAt + i, m_fadeFrames);
        const float falling = 1 - rampWeight(i, count);
        for (std::size_t channel = 0; channel < 2; ++channel) {
            float& sample = m_tail[static_cast<std::size_t>(2 * i) + channel];
            sample += frame[channel] * weight * falling;
        }
    }
    m_tailAt = 0;
    m_tailFrames = std::max(count, left);
    return count;
}

void OutputStage::addTail(std::span<float> stereo) QUILLET_REALTIME
{
    const std::int64_t count = std::min(static_cast<std::int64_t>(stereo.size()) / 2, m_tailFrames - m_tailAt);
    for (std::int64_t i = 0; i < 2 * count; ++i)
        stereo[static_cast<std::size_t>(i)] += m_tail[static_cast<std::size_t>(2 * m_tailAt + i)];
    m_tailAt += count;
}

void OutputStage::passMarks() QUILLET_REALTIME
{
    const OutputMark* mark = m_marks.front();
    while (mark != nullptr && mark->generation == m_generation && mark->outputFrame <= m_ring.consumed()) {
        if (!m_ended && mark->kind != OutputMark::Kind::runBegin) {
            ++m_passesEnded;
            m_ended = mark->kind == OutputMark::Kind::runEnd;
            m_hasNews = true;
        }
        m_marks.pop();
        mark = m_marks.front();
    }
}

void OutputStage::reportProgress(bool moving) QUILLET_REALTIME
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    m_report.write({ m_generation, m_passesEnded, m_ended, moving, m_ring.consumed(), m_enteredFrame, m_framesSinceEnd,
                     std::chrono::duration_cast<std::chrono::nanoseconds>(now).count() });
    if (m_hasNews) {
        m_hasNews = false;
        m_news.raise();
    }
}

bool OutputStage::isReady(std::int64_t frames) const QUILLET_REALTIME
{
    const std::int64_t wanted = wantedGeneration();
    if (!wantsRun() || m_pausedGeneration.load(std::memory_order_acquire) == wanted)
        return true;
    if (m_generation == wanted)
        return m_ended || canGoOn(frames);
    const OutputMark* begin = beginOf(wanted);
    return begin != nullptr && canEnter(*begin, frames);
}

}  // namespace quillet
