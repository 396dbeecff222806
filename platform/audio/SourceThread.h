// Reads the files of the present take ahead of the sound, all of them in step, and joins the passes of a loop without a gap. It
// keeps the decoders in use open and decodes nothing beyond what its ring holds.
// Threads: owns one worker; `play`, `stop` and `wake` may be called from any other thread.
#pragma once

#include "platform/audio/Take.h"
#include "platform/base/WakeSemaphore.h"

#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

namespace quillet {

class SourceThread {
public:
    /// `delivered` is called on the worker whenever there is something new in the take's ring.
    explicit SourceThread(std::function<void()> delivered);
    ~SourceThread();
    SourceThread(const SourceThread&) = delete;
    SourceThread& operator=(const SourceThread&) = delete;

    /// Works for `take` from now on, in place of the one before.
    void play(std::shared_ptr<Take> take);
    void stop() { play(nullptr); }
    /// There is room in the ring, or the next pass changed.
    void wake() { m_wake.wake(); }

private:
    // ---- Worker ----

    void run(const std::stop_token& stopped);
    void adopt(std::shared_ptr<Take> take);
    bool deliver();
    void endPass();
    void readStep(std::int64_t frames);
    void readSource(std::size_t source, std::int64_t fileFrame, std::span<float> stereo);
    void writeJoint(FrameRange next, std::int64_t frames);

    std::function<void()> m_delivered;
    WakeSemaphore m_wake;

    std::mutex m_lock;
    std::shared_ptr<Take> m_pending;
    bool m_hasPending = false;

    std::shared_ptr<Take> m_take;
    FrameRange m_segment;
    std::int64_t m_position = 0;
    std::int64_t m_streamFrames = 0;
    std::int64_t m_block = 0;
    bool m_ended = true;
    std::vector<float> m_stereo, m_lead, m_wide;

    std::jthread m_worker;
};

}  // namespace quillet
