// Changes speed and pitch independently, and knows which source frame each frame that comes out is: Rubber Band's finer engine
// in real-time mode, fed and read in interleaved stereo. Above 48 kHz the sound is stretched at a fraction of its rate, since
// there is nothing to hear beyond and the price doubles with the rate. It knows no segments and no gains.
// Threads: one worker thread; everything may allocate, so none of it belongs in a device callback.
#pragma once

#include "platform/audio/PositionMap.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace quillet {

class TimeStretcher {
public:
    static constexpr std::int64_t maxBlock = 1024;

    explicit TimeStretcher(int sampleRate);
    ~TimeStretcher();
    TimeStretcher(const TimeStretcher&) = delete;
    TimeStretcher& operator=(const TimeStretcher&) = delete;

    struct Settings {
        /// Source seconds per second of output, 0.05 to 3.
        double rate = 1;
        double pitchCents = 0;
        /// Formants stay where they are while the pitch moves.
        bool keepsFormants = false;
        bool operator==(const Settings&) const = default;
    };

    /// Forgets all it was fed. Some 10 ms; done ahead of `begin` it is not done again there.
    void reset(const Settings& settings);
    /// Begins: the first frame that comes out is source frame `position`. `source` fills frames from the one it is told on and
    /// is asked for what comes before `position` too.
    using Source = std::function<void(std::int64_t first, std::span<float> stereo)>;
    void begin(std::int64_t position, const Settings& settings, const Source& source);
    /// May change between any two blocks; the sound follows about 50 ms of output later, and so does the position.
    void setSettings(const Settings& settings);

    /// The source frame to feed next, and how many frames it would like, at most maxBlock.
    [[nodiscard]] std::int64_t nextFrame() const { return m_nextFrame; }
    [[nodiscard]] std::int64_t wantedFrames() const;
    /// Feeds at most maxBlock frames.
    void feed(std::span<const float> stereo);
    /// Takes finished frames; returns how many, at most stereo.size() / 2.
    [[nodiscard]] std::int64_t retrieve(std::span<float> stereo);

    /// The source frame of the next frame that comes out, and source frames per frame from there on.
    [[nodiscard]] double position() const { return m_map.sourceAt(static_cast<double>(m_retrieved)); }
    [[nodiscard]] double slope() const { return m_map.pieceAt(static_cast<double>(m_retrieved)).slope; }
    /// How many frames come out before the slope changes, and before the first frame at or after source frame `frame`: both
    /// rounded up, at most `limit`.
    [[nodiscard]] std::int64_t framesToChange(std::int64_t limit) const;
    [[nodiscard]] std::int64_t framesTo(double frame, std::int64_t limit) const;

private:
    struct Engine;

    void anchor(std::int64_t required);
    void stretch(std::span<const float> stereo);
    void takeFinished();
    void finish(std::span<const float> stereo);

    std::unique_ptr<Engine> m_engine;
    Settings m_settings;
    bool m_isReset = true;
    /// Graph frames per frame that is stretched.
    std::int64_t m_factor;
    /// The engine's start pad at its own pitch: half its window.
    std::int64_t m_halfWindow;

    std::int64_t m_begin = 0;
    std::int64_t m_nextFrame = 0;
    /// Frames that went into the engine after its start pad, that came out of it, and of these the ones to drop.
    std::int64_t m_fed = 0;
    std::int64_t m_madeFrames = 0;
    std::int64_t m_drop = 0;
    std::int64_t m_retrieved = 0;
    PositionMap m_map;
    /// Finished frames, the first `m_taken` samples of which are gone.
    std::vector<float> m_finished, m_scratch;
    std::size_t m_taken = 0;
};

}  // namespace quillet
