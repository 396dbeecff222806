// Reads the files of the present run ahead of the sound, all of them in step, and works through its plan: joins passes without
// a gap, and repeats a held window as a loop that fits its waveform. It keeps the decoders in use open and decodes nothing
// beyond what the run's ring holds.
// Threads: owns one worker; `play`, `stop` and `wake` may be called from any other thread.
#pragma once

#include "platform/audio/Run.h"

#include <functional>
#include <memory>
#include <thread>

namespace quillet {

class SourceThread {
public:
    /// `delivered` is called on the worker whenever there is something new in the run's ring. `isRealTime` asks for a priority
    /// above the machine's other work.
    SourceThread(std::function<void()> delivered, bool isRealTime);
    /// A worker that hangs in a read from a disk that does not answer is left behind; it calls nobody any more.
    ~SourceThread();
    SourceThread(const SourceThread&) = delete;
    SourceThread& operator=(const SourceThread&) = delete;

    /// Works for `run` from now on, in place of the one before.
    void play(std::shared_ptr<Run> run);
    void stop() { play(nullptr); }
    /// There is room in the ring, or the plan changed.
    void wake();

private:
    class Worker;

    std::shared_ptr<Worker> m_worker;
    std::thread m_thread;
};

}  // namespace quillet
