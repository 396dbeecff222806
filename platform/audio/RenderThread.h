// Drives the renderer: wakes when the device took frames, when the source delivered, or when there is a new run, and renders
// until the output ring is full again.
// Threads: owns one worker; its functions may be called from any other thread.
#pragma once

#include "platform/audio/Renderer.h"
#include "platform/base/WakeSemaphore.h"

#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace quillet {

class RenderThread {
public:
    /// `wake` is the semaphore that everyone with news for the renderer wakes; `rendered` is called on the worker after each
    /// step. `isRealTime` asks for a priority above the machine's other work.
    RenderThread(Renderer& renderer, WakeSemaphore& wake, std::function<void()> rendered, bool isRealTime);
    ~RenderThread();
    RenderThread(const RenderThread&) = delete;
    RenderThread& operator=(const RenderThread&) = delete;

    /// Renders `run` from now on, in place of the one before; null ends the sound.
    void play(std::shared_ptr<Run> run);
    /// Gets ready for runs of this sample rate, and for the present speed and pitch.
    void prepare(int sampleRate);

private:
    void run(const std::stop_token& stopped);
    void takeOrders();
    int idleSampleRate();

    Renderer& m_renderer;
    WakeSemaphore& m_wake;
    std::function<void()> m_rendered;
    const bool m_isRealTime;

    std::mutex m_lock;
    std::shared_ptr<Run> m_pending;
    bool m_hasPending = false;
    int m_sampleRate = 0;

    std::jthread m_worker;
};

}  // namespace quillet
