#include "platform/audio/SourceThread.h"

#include "platform/audio/Ramp.h"
#include "platform/base/Require.h"
#include "platform/base/ThreadPriority.h"

#include <algorithm>
#include <utility>

namespace quillet {
namespace {

/// The first block of a take is small, for an early start; the later ones are cheap to read.
constexpr std::int64_t firstBlock = 1024;
constexpr std::int64_t largestBlock = 4096;
/// How far before its end a pass is decided: whether another follows, and what the two are cross-faded over.
constexpr double jointSeconds = 0.004;
/// A shorter segment is not repeated seamlessly; it would be more joint than sound.
constexpr double shortestLoopSeconds = 0.012;

std::int64_t frames(double seconds, int sampleRate) { return static_cast<std::int64_t>(seconds * sampleRate); }

}  // namespace

SourceThread::SourceThread(std::function<void()> delivered)
    : m_delivered(std::move(delivered)),
      m_worker([this](const std::stop_token& stopped) { run(stopped); })
{
}

SourceThread::~SourceThread()
{
    m_worker.request_stop();
    m_wake.wake();
}

void SourceThread::play(std::shared_ptr<Take> take)
{
    {
        const std::scoped_lock lock(m_lock);
        m_pending = std::move(take);
        m_hasPending = true;
    }
    m_wake.wake();
}

void SourceThread::run(const std::stop_token& stopped)
{
    raiseThreadPriority();
    while (!stopped.stop_requested()) {
        std::shared_ptr<Take> pending;
        bool hasPending = false;
        {
            const std::scoped_lock lock(m_lock);
            pending = std::move(m_pending);
            hasPending = std::exchange(m_hasPending, false);
        }
        if (hasPending)
            adopt(std::move(pending));
        if (m_take != nullptr && !m_ended && deliver())
            m_delivered();
        else
            m_wake.wait(3600);
    }
}

void SourceThread::adopt(std::shared_ptr<Take> take)
{
    m_take = std::move(take);
    m_ended = m_take == nullptr;
    if (m_ended)
        return;
    m_segment = m_take->pass(0).segment;
    m_position = 0;
    m_streamFrames = 0;
    m_block = firstBlock;
    m_stereo.resize(static_cast<std::size_t>(2 * largestBlock));
    m_lead.resize(m_stereo.size());
    m_wide.resize(static_cast<std::size_t>(largestBlock * m_take->ring.width()));
}

/// Writes one block; false when there is nothing to do before the next wake.
bool SourceThread::deliver()
{
    if (m_take->closed.load(std::memory_order_acquire)) {
        m_ended = true;
        return false;
    }
    const std::int64_t joint = std::min(frames(jointSeconds, m_take->sampleRate), m_segment.count);
    const std::int64_t undecided = m_segment.count - joint - m_position;
    const std::int64_t count = undecided > 0 ? std::min(m_block, undecided) : joint;
    if (m_take->ring.space() < count)
        return false;
    if (undecided <= 0) {
        endPass();
        return true;
    }
    readStep(count);
    m_block = largestBlock;
    return true;
}

/// Decides what follows the pass, and writes its last frames accordingly.
void SourceThread::endPass()
{
    const std::int64_t rest = m_segment.count - m_position;
    const std::int64_t end = m_streamFrames + rest;
    const auto next = m_take->beginNextPass(end, frames(shortestLoopSeconds, m_take->sampleRate));
    // The ring holds far fewer of the shortest passes than the queue holds ends.
    REQUIRE(m_take->passEnds.push({ end, next ? rest : 0, !next }));
    if (!next) {
        readStep(rest);
        m_ended = true;
        return;
    }
    writeJoint(*next, rest);
    m_segment = *next;
    m_position = 0;
}

/// Reads `count` frames of the segment from every file into the ring.
void SourceThread::readStep(std::int64_t count)
{
    const auto stereo = std::span(m_stereo).first(static_cast<std::size_t>(2 * count));
    const auto width = static_cast<std::size_t>(m_take->ring.width());
    for (std::size_t source = 0; source < m_take->sources.size(); ++source) {
        readSource(source, m_segment.start + m_position, stereo);
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            m_wide[i * width + 2 * source] = stereo[2 * i];
            m_wide[i * width + 2 * source + 1] = stereo[2 * i + 1];
        }
    }
    m_take->ring.write(std::span(m_wide).first(static_cast<std::size_t>(count) * width));
    m_position += count;
    m_streamFrames += count;
}

/// Fills `stereo`, with silence where the file has nothing.
void SourceThread::readSource(std::size_t source, std::int64_t fileFrame, std::span<float> stereo)
{
    const std::int64_t got = m_take->sources[source].file->read(fileFrame, stereo);
    std::fill(stereo.begin() + 2 * got, stereo.end(), 0.0F);
}

/// Writes the last `count` frames of the pass, fading over into the frames that lead to the start of the next one.
void SourceThread::writeJoint(FrameRange next, std::int64_t count)
{
    const auto samples = static_cast<std::size_t>(2 * count);
    const auto stereo = std::span(m_stereo).first(samples);
    const auto lead = std::span(m_lead).first(samples);
    const std::int64_t missing = std::max<std::int64_t>(0, count - next.start);
    const auto width = static_cast<std::size_t>(m_take->ring.width());
    for (std::size_t source = 0; source < m_take->sources.size(); ++source) {
        readSource(source, m_segment.start + m_position, stereo);
        std::fill_n(lead.begin(), 2 * missing, 0.0F);
        if (missing < count)
            readSource(source, next.start - count + missing, lead.subspan(static_cast<std::size_t>(2 * missing)));
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            const float in = rampWeight(static_cast<std::int64_t>(i), count);
            for (std::size_t channel = 0; channel < 2; ++channel)
                m_wide[i * width + 2 * source + channel] = stereo[2 * i + channel] * (1 - in) + lead[2 * i + channel] * in;
        }
    }
    m_take->ring.write(std::span(m_wide).first(static_cast<std::size_t>(count) * width));
    m_streamFrames += count;
}

}  // namespace quillet
