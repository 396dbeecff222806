#include "platform/audio/RenderThread.h"

#include "platform/base/ThreadPriority.h"

#include <utility>

namespace quillet {

RenderThread::RenderThread(Renderer& renderer, WakeSemaphore& wake, std::function<void()> rendered, bool isRealTime)
    : m_renderer(renderer),
      m_wake(wake),
      m_rendered(std::move(rendered)),
      m_isRealTime(isRealTime),
      m_worker([this](const std::stop_token& stopped) { run(stopped); })
{
}

RenderThread::~RenderThread()
{
    m_worker.request_stop();
    m_wake.wake();
}

void RenderThread::play(std::shared_ptr<Run> run)
{
    {
        const std::scoped_lock lock(m_lock);
        m_pending = std::move(run);
        m_hasPending = true;
    }
    m_wake.wake();
}

void RenderThread::prepare(int sampleRate)
{
    {
        const std::scoped_lock lock(m_lock);
        m_sampleRate = sampleRate;
    }
    m_wake.wake();
}

void RenderThread::run(const std::stop_token& stopped)
{
    if (m_isRealTime)
        m_renderer.setPriority(raiseThreadPriority());
    while (!stopped.stop_requested()) {
        takeOrders();
        const bool more = m_renderer.step();
        m_rendered();
        if (more)
            continue;
        if (const int sampleRate = idleSampleRate())
            m_renderer.prepareSpare(sampleRate);
        m_wake.wait(3600);
    }
}

/// The sample rate to get ready for; 0 when there is something better to do, or none is known.
int RenderThread::idleSampleRate()
{
    const std::scoped_lock lock(m_lock);
    return m_hasPending ? 0 : m_sampleRate;
}

void RenderThread::takeOrders()
{
    std::shared_ptr<Run> run;
    {
        const std::scoped_lock lock(m_lock);
        if (!std::exchange(m_hasPending, false))
            return;
        run = std::move(m_pending);
    }
    // It may have been granted more since it started.
    m_renderer.setPriority(currentThreadPriority());
    m_renderer.begin(std::move(run));
}

}  // namespace quillet
