#include "platform/audio/OutputStage.h"

#include "platform/audio/Ramp.h"

#include <algorithm>
#include <chrono>

namespace quillet {

OutputStage::OutputStage(WakeSemaphore& renderer)
    : m_renderer(renderer)
{
    for (int i = 0; i < fadeFrames; ++i)
        m_fade[static_cast<std::size_t>(i)] = i == 0 ? 0.0F : rampWeight(i - 1, fadeFrames - 1);
    m_fade.back() = 1;
}

// ---- Main thread ----

void OutputStage::setEpoch(std::int64_t epoch, Content content)
{
    m_wanted.store(epoch << 1 | (content == Content::take ? 1 : 0), std::memory_order_release);
}

// ---- Audio thread ----

void OutputStage::render(std::span<float> stereo) QUILLET_REALTIME
{
    const RealtimeScope scope;
    const std::int64_t sounding = copySound(stereo);
    std::fill(stereo.begin() + 2 * sounding, stereo.end(), 0.0F);
    m_equalizer.process(stereo);
    m_limiter.process(stereo, m_limiting.load(std::memory_order_relaxed));
    reportProgress(sounding > 0);
    m_renderer.wake();
}

std::int64_t OutputStage::wantedEpoch() const QUILLET_REALTIME { return m_wanted.load(std::memory_order_acquire) >> 1; }

/// Fills the front of `stereo` with what is to be heard; returns the number of frames.
std::int64_t OutputStage::copySound(std::span<float> stereo) QUILLET_REALTIME
{
    const std::int64_t wanted = wantedEpoch();
    const bool paused = m_pausedEpoch.load(std::memory_order_acquire) == wanted;
    const std::int64_t frames = static_cast<std::int64_t>(stereo.size()) / 2;
    std::int64_t at = 0;
    while (at < frames) {
        const bool leaving = m_epoch != wanted;
        const OutputMark* cut = findCut();
        const std::int64_t untilCut = cut == nullptr ? INT64_MAX : std::max<std::int64_t>(0, cut->cutFrame - m_ring.consumed());
        const bool silenced = leaving || paused || m_ended || untilCut <= m_level;
        if (silenced && m_level == 0) {
            if (cut != nullptr && untilCut == 0) {
                m_ring.skipTo(std::min(cut->outputFrame, m_ring.written()));
                passMarks();
            }
            if (!leaving || !enterTake(wanted))
                break;
            continue;
        }
        if (m_waiting && !hasStarted())
            break;
        const std::int64_t most = silenced ? frames - at : std::min(frames - at, untilCut - m_level);
        const std::int64_t copied =
            copyBlock(stereo.subspan(static_cast<std::size_t>(2 * at)).first(static_cast<std::size_t>(2 * most)), silenced);
        at += copied;
        if (copied > 0)
            continue;
        m_level = 0;
        if (!silenced && !m_ended) {
            m_waiting = true;
            m_underruns.fetch_add(1, std::memory_order_relaxed);
            break;
        }
    }
    return at;
}

/// The end of the pass that sounds, if it must not be crossed and is known.
const OutputMark* OutputStage::findCut() const QUILLET_REALTIME
{
    if (m_ended || m_closedEpoch.load(std::memory_order_acquire) != m_epoch)
        return nullptr;
    for (std::size_t i = 0;; ++i) {
        const OutputMark* mark = m_marks.peek(i);
        const bool ends =
            mark != nullptr && (mark->kind == OutputMark::Kind::passEnd || mark->kind == OutputMark::Kind::takeEnd);
        if (mark == nullptr || (ends && mark->epoch == m_epoch))
            return mark;
    }
}

/// Copies up to the next mark, the end of the ring's content or the end of a fade, whichever comes first.
std::int64_t OutputStage::copyBlock(std::span<float> stereo, bool fallSilent) QUILLET_REALTIME
{
    const std::int64_t wantedFrames = static_cast<std::int64_t>(stereo.size()) / 2;
    passMarks();
    const std::int64_t available = m_ring.available();
    std::int64_t count = std::min(wantedFrames, available);
    const OutputMark* next = m_marks.front();
    if (next != nullptr && (next->epoch != m_epoch || next->outputFrame > m_ring.consumed()))
        count = std::min(count, next->outputFrame - m_ring.consumed());
    // About to run out: rather a short fade than a cut.
    const bool starving = available < wantedFrames && findMark(OutputMark::Kind::takeEnd, m_epoch) == nullptr;
    const bool falling = fallSilent || starving;
    if (fallSilent)
        count = std::min<std::int64_t>(count, m_level);
    m_ring.read(stereo.first(static_cast<std::size_t>(2 * count)));
    for (std::int64_t i = 0; i < count && (falling || m_level < fadeFrames); ++i) {
        m_level = falling ? std::max(m_level - 1, 1) : m_level + 1;
        if (fallSilent && i == count - 1 && m_level == 1)
            m_level = 0;
        stereo[static_cast<std::size_t>(2 * i)] *= m_fade[static_cast<std::size_t>(m_level)];
        stereo[static_cast<std::size_t>(2 * i + 1)] *= m_fade[static_cast<std::size_t>(m_level)];
    }
    passMarks();
    return count;
}

/// Drops everything before the take of `epoch` and begins it; false when there is nothing of it yet.
bool OutputStage::enterTake(std::int64_t epoch) QUILLET_REALTIME
{
    // Read before the marks: a take's mark is pushed before its frames, so no frame of the wanted take is dropped unseen.
    const std::int64_t written = m_ring.written();
    const OutputMark* mark = m_marks.front();
    while (mark != nullptr && mark->epoch < epoch) {
        m_marks.pop();
        mark = m_marks.front();
    }
    if (mark == nullptr || mark->epoch > epoch || mark->kind != OutputMark::Kind::takeBegin) {
        m_ring.skipTo(mark == nullptr ? written : std::min(written, mark->outputFrame));
        return false;
    }
    m_ring.skipTo(mark->outputFrame);
    m_epoch = epoch;
    m_framesNeeded = mark->framesNeeded;
    m_waiting = true;
    m_ended = false;
    m_level = fadeFrames;
    m_passesEnded = 0;
    m_markedOutput = mark->outputFrame;
    m_markedSource = mark->sourceFrame;
    m_slope = mark->slope;
    m_marks.pop();
    passMarks();
    return true;
}

/// True once enough is rendered to go on without running out again.
bool OutputStage::hasStarted() QUILLET_REALTIME
{
    m_waiting = m_ring.available() < m_framesNeeded && findMark(OutputMark::Kind::takeEnd, m_epoch) == nullptr;
    return !m_waiting;
}

void OutputStage::passMarks() QUILLET_REALTIME
{
    const OutputMark* mark = m_marks.front();
    while (mark != nullptr && mark->epoch == m_epoch && mark->outputFrame <= m_ring.consumed()) {
        passMark(*mark);
        m_marks.pop();
        mark = m_marks.front();
    }
}

void OutputStage::passMark(const OutputMark& mark) QUILLET_REALTIME
{
    m_markedOutput = mark.outputFrame;
    m_markedSource = mark.sourceFrame;
    m_slope = mark.slope;
    if (mark.kind != OutputMark::Kind::passEnd && mark.kind != OutputMark::Kind::takeEnd)
        return;
    if (m_ended)
        return;
    ++m_passesEnded;
    m_ended = mark.kind == OutputMark::Kind::takeEnd || m_closedEpoch.load(std::memory_order_acquire) == m_epoch;
    m_endingPassed = true;
    // A take that ended by itself has faded already; one that was closed fades over into the dropped pass.
    if (mark.kind == OutputMark::Kind::takeEnd)
        m_level = 0;
}

const OutputMark* OutputStage::findMark(OutputMark::Kind kind, std::int64_t epoch) const QUILLET_REALTIME
{
    for (std::size_t i = 0;; ++i) {
        const OutputMark* mark = m_marks.peek(i);
        if (mark == nullptr || (mark->kind == kind && mark->epoch == epoch))
            return mark;
    }
}

void OutputStage::reportProgress(bool moving) QUILLET_REALTIME
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const double played = static_cast<double>(m_ring.consumed() - m_markedOutput);
    m_report.write({ m_epoch, m_passesEnded, m_ended, m_markedSource + played * m_slope, moving && !m_ended ? m_slope : 0,
                     std::chrono::duration_cast<std::chrono::nanoseconds>(now).count() });
    if (m_endingPassed) {
        m_endingPassed = false;
        m_endings.raise();
    }
}

bool OutputStage::isReady(std::int64_t frames) const QUILLET_REALTIME
{
    const std::int64_t wanted = m_wanted.load(std::memory_order_acquire);
    const std::int64_t epoch = wanted >> 1;
    if ((wanted & 1) == 0 || m_pausedEpoch.load(std::memory_order_acquire) == epoch || (m_epoch == epoch && m_ended))
        return true;
    std::int64_t begin = m_ring.consumed();
    std::int64_t needed = m_framesNeeded;
    if (m_epoch != epoch) {
        const OutputMark* mark = findMark(OutputMark::Kind::takeBegin, epoch);
        if (mark == nullptr)
            return false;
        begin = mark->outputFrame;
        needed = mark->framesNeeded;
    }
    return findMark(OutputMark::Kind::takeEnd, epoch) != nullptr || m_ring.written() - begin >= std::max(frames, needed);
}

}  // namespace quillet
