// Changes speed and pitch independently: Rubber Band's finer engine in real-time mode, fed and read in interleaved stereo. It
// counts nothing and knows no segments; Renderer maps its output to source frames.
// Threads: one worker thread; `reset`, a change of pitch and the constructor allocate, so none of it belongs in a device
// callback.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

namespace quillet {

class TimeStretcher {
public:
    explicit TimeStretcher(int sampleRate);
    ~TimeStretcher();
    TimeStretcher(const TimeStretcher&) = delete;
    TimeStretcher& operator=(const TimeStretcher&) = delete;

    /// Source seconds per second of output, 0.05 to 3; may change between any two blocks.
    void setRate(double rate);
    void setPitch(double pitchCents);
    [[nodiscard]] double pitch() const { return m_pitchCents; }

    /// Forgets all it was fed.
    void reset();

    /// Frames to feed ahead of the first frame (silence, or what comes before it) at the present pitch, and the frames of
    /// output to drop then, so that what follows begins with the first frame.
    [[nodiscard]] std::int64_t startPad() const;
    [[nodiscard]] std::int64_t startDelay() const;

    /// How many frames it would like next, at least 1 and at most maximumBlock.
    [[nodiscard]] std::int64_t wantedFrames() const;
    static constexpr std::int64_t maximumBlock = 1024;

    /// Feeds at most maximumBlock frames.
    void feed(std::span<const float> stereo);
    /// Takes finished frames; returns how many, at most stereo.size() / 2.
    [[nodiscard]] std::int64_t retrieve(std::span<float> stereo);

private:
    struct Engine;
    std::unique_ptr<Engine> m_engine;
    double m_pitchCents = 0;
};

}  // namespace quillet
