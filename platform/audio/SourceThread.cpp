#include "platform/audio/SourceThread.h"

#include "platform/audio/PassReader.h"
#include "platform/audio/Ramp.h"
#include "platform/base/ThreadPriority.h"
#include "platform/base/WakeSemaphore.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <utility>

namespace quillet {
namespace {

/// The first block of a run is small, for an early start; the later ones are cheap to read.
constexpr std::int64_t firstBlock = 1024;
constexpr std::int64_t maxBlock = 4096;
/// How far before its end a pass is decided: whether another follows, and what the two are cross-faded over.
constexpr double jointSeconds = 0.004;
/// How long the end of the program waits for a read that is under way.
constexpr double lastReadSeconds = 0.5;

}  // namespace

/// What the worker needs, kept by the worker itself, since it may outlive everything else.
class SourceThread::Worker {
public:
    Worker(std::function<void()> delivered, bool isRealTime)
        : m_delivered(std::move(delivered)),
          m_isRealTime(isRealTime)
    {
    }

    // ---- Any thread ----

    void play(std::shared_ptr<Run> run)
    {
        {
            const std::scoped_lock lock(m_lock);
            m_pending = std::move(run);
            m_hasPending = true;
        }
        m_wake.wake();
    }

    void wake() { m_wake.wake(); }

    /// From now on nobody is called; true when the worker has come to its end.
    bool finish()
    {
        {
            const std::scoped_lock lock(m_lock);
            m_stopped = true;
        }
        m_wake.wake();
        m_finished.wait(lastReadSeconds);
        return m_hasFinished;
    }

    // ---- Worker ----

    void run()
    {
        if (m_isRealTime)
            raiseThreadPriority();
        while (takeOrders()) {
            if (m_run == nullptr || m_ended || !deliver())
                m_wake.wait(3600);
            else
                tellDelivered();
        }
        m_hasFinished = true;
        m_finished.wake();
    }

private:
    bool takeOrders()
    {
        std::shared_ptr<Run> pending;
        {
            const std::scoped_lock lock(m_lock);
            if (m_stopped)
                return false;
            if (!std::exchange(m_hasPending, false))
                return true;
            pending = std::move(m_pending);
        }
        begin(std::move(pending));
        return true;
    }

    void tellDelivered()
    {
        const std::scoped_lock lock(m_lock);
        if (!m_stopped)
            m_delivered();
    }

    void begin(std::shared_ptr<Run> run)
    {
        m_reader.reset();
        m_run = std::move(run);
        m_ended = m_run == nullptr;
        if (m_ended)
            return;
        m_reader.emplace(m_run->sources);
        m_streamFrames = -m_run->leadFrames;
        m_block = firstBlock + m_run->leadFrames;
        beginPass(m_run->pass(0).pass, m_run->start.offsetFrames - m_run->leadFrames);
    }

    void beginPass(const Pass& pass, std::int64_t position)
    {
        m_pass = pass;
        m_position = position;
        m_reader->begin(pass, m_run->sampleRate);
    }

    /// Writes one block; false when there is nothing to do before the next wake.
    bool deliver()
    {
        const std::int64_t joint = jointFrames(m_pass);
        const std::int64_t undecided = m_pass.segment.count - joint - m_position;
        const std::int64_t rest = m_pass.segment.count - m_position;
        const std::int64_t count = undecided > 0 ? std::min(m_block, undecided) : rest;
        if (m_run->ring.space() < count)
            return false;
        if (undecided > 0) {
            write(count, nullptr);
            m_block = maxBlock;
            return true;
        }
        if (m_run->passEnds.isFull())
            return false;
        endPass(rest);
        return true;
    }

    /// Decides what follows the pass, and writes its last frames accordingly.
    void endPass(std::int64_t rest)
    {
        const std::int64_t end = m_streamFrames + rest;
        const auto next = m_run->beginNextPass(end);
        const PassEnd place = next ? PassEnd{ end, false, next->pauseFrames, next->own } : PassEnd{ end, true, 0, {} };
        // There is room: it was looked for before the decision.
        static_cast<void>(m_run->passEnds.push(place));
        const bool joins = next && next->pauseFrames == 0 && !(m_pass.held && next->held && next->segment == m_pass.segment);
        write(rest, joins ? &*next : nullptr);
        m_ended = !next;
        if (next)
            beginPass(*next, 0);
    }

    [[nodiscard]] std::int64_t jointFrames(const Pass& pass) const
    {
        return std::min(static_cast<std::int64_t>(jointSeconds * m_run->sampleRate), pass.segment.count / 2);
    }

    /// Writes `count` frames of the pass from every file into the ring; with a `next` pass they fade over into the frames that
    /// lead to its start.
    void write(std::int64_t count, const Pass* next)
    {
        const auto samples = static_cast<std::size_t>(2 * count);
        const auto width = static_cast<std::size_t>(m_run->ring.width());
        m_stereo.resize(samples);
        m_lead.resize(samples);
        m_wide.resize(static_cast<std::size_t>(count) * width);
        for (std::size_t source = 0; source < m_run->sources.size(); ++source) {
            m_reader->read(source, m_position, m_stereo);
            if (next != nullptr)
                fadeInto(source, *next);
            for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
                m_wide[i * width + 2 * source] = m_stereo[2 * i];
                m_wide[i * width + 2 * source + 1] = m_stereo[2 * i + 1];
            }
        }
        m_run->ring.write(m_wide);
        m_position += count;
        m_streamFrames += count;
    }

    void fadeInto(std::size_t source, const Pass& next)
    {
        m_reader->readLead(source, next, m_lead);
        const auto count = static_cast<std::int64_t>(m_stereo.size()) / 2;
        for (std::size_t i = 0; i < m_stereo.size(); ++i) {
            const float in = rampWeight(static_cast<std::int64_t>(i / 2), count);
            m_stereo[i] = m_stereo[i] * (1 - in) + m_lead[i] * in;
        }
    }

    WakeSemaphore m_wake, m_finished;
    std::mutex m_lock;
    std::function<void()> m_delivered;
    const bool m_isRealTime;
    std::shared_ptr<Run> m_pending;
    bool m_hasPending = false;
    bool m_stopped = false;
    std::atomic<bool> m_hasFinished{ false };

    // Worker.
    std::shared_ptr<Run> m_run;
    std::optional<PassReader> m_reader;
    Pass m_pass;
    /// The next frame of the pass, and of the stream.
    std::int64_t m_position = 0;
    std::int64_t m_streamFrames = 0;
    std::int64_t m_block = 0;
    bool m_ended = true;
    std::vector<float> m_stereo, m_lead, m_wide;
};

SourceThread::SourceThread(std::function<void()> delivered, bool isRealTime)
    : m_worker(std::make_shared<Worker>(std::move(delivered), isRealTime)),
      m_thread([worker = m_worker] { worker->run(); })
{
}

SourceThread::~SourceThread()
{
    if (m_worker->finish())
        m_thread.join();
    else
        m_thread.detach();
}

void SourceThread::play(std::shared_ptr<Run> run) { m_worker->play(std::move(run)); }

void SourceThread::wake() { m_worker->wake(); }

}  // namespace quillet
