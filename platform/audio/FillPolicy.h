// How many frames the output ring is to hold: as few as the device and the stretcher allow, so that changes are heard soon.
// Threads: the render thread.
#pragma once

#include "platform/base/ThreadPriority.h"

#include <cstdint>

namespace quillet {

class FillPolicy {
public:
    /// How much the thread may count on its turn: with real-time scheduling the ring is kept shorter.
    void setPriority(ThreadPriority priority) { m_priority = priority; }

    /// What the device has asked for and how often the ring has run dry, both since the program's start.
    struct Device {
        std::int64_t maxBlock = 0;
        std::int64_t underruns = 0;
    };
    /// Frames at `sampleRate` for sound of this `slope` (stream frames per frame).
    [[nodiscard]] std::int64_t target(double slope, int sampleRate, const Device& device);
    /// So many frames have been rendered: the caution after the ring ran dry wears off.
    void rendered(std::int64_t frames);

private:
    ThreadPriority m_priority = ThreadPriority::unchanged;
    std::int64_t m_seenUnderruns = 0;
    std::int64_t m_cautiousFrames = 0;
};

}  // namespace quillet
