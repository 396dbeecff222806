// The sound of a run's passes, read from its files: plain segments, and held windows as loops that fit their waveform. It knows
// nothing of rings and plans.
// Threads: the source thread. Reading may wait for the disk.
#pragma once

#include "platform/audio/Run.h"

#include <cstdint>
#include <span>
#include <vector>

namespace quillet {

class PassReader {
public:
    explicit PassReader(const std::vector<RunSource>& sources)
        : m_sources(sources)
    {
    }

    /// What follows is read from `pass`. A held window that is continued sounds on where its loop is.
    void begin(const Pass& pass, int sampleRate);
    /// Frames [first, first + stereo.size() / 2) of the pass from one of the files; silence where the file has nothing.
    void read(std::size_t source, std::int64_t first, std::span<float> stereo) const;
    /// The frames before a segment's start, in the same way.
    void readLead(std::size_t source, const Pass& next, std::span<float> stereo) const;

private:
    void makeLoops(int sampleRate);
    void readFile(std::size_t source, std::int64_t fileFrame, std::span<float> stereo) const;

    const std::vector<RunSource>& m_sources;
    Pass m_pass;
    /// Of a held window: what of the loop the pass's first frame is, the loop's length, and one loop for each file.
    std::int64_t m_phase = 0;
    std::int64_t m_loopFrames = 0;
    std::vector<std::vector<float>> m_loops;
};

}  // namespace quillet
