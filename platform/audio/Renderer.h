// Turns the present take into what the device gets: stretched and transposed, or untouched, in small steps that keep the output
// ring filled just far enough. It maps output frames to source frames, marks beginnings and ends, and ramps the take's two
// edges. It does not decode, and it never runs in the device callback: one of the stretcher's bursts is longer than a device
// period. Threads: `setRate` and `setPitch` on the main thread, the rest on the render thread.
#pragma once

#include "platform/audio/MixedSource.h"
#include "platform/audio/OutputStage.h"
#include "platform/audio/TimeStretcher.h"
#include "platform/base/ThreadPriority.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace quillet {

class Renderer {
public:
    Renderer(OutputStage& output, std::function<void()> sourceConsumed);

    // ---- Main thread ----

    void setRate(double rate) { m_rate.store(rate, std::memory_order_relaxed); }
    void setPitch(double pitchCents) { m_pitchCents.store(pitchCents, std::memory_order_relaxed); }

    // ---- Render thread ----

    /// How much the thread may count on its turn: with real-time scheduling the ring is kept shorter, and changes are heard
    /// sooner.
    void setPriority(ThreadPriority priority) { m_priority = priority; }
    /// Renders `take` from now on; null ends the sound.
    void begin(std::shared_ptr<Take> take);
    /// Renders a little; false when there is nothing to do before the next wake.
    bool step();
    /// Gets a stretcher for this sample rate ready for the next start; to be called when there is nothing else to do.
    void prepareSpare(int sampleRate);

private:
    /// Untouched, stretched, crossing from one to the other, or from a stretcher to another one with other gains.
    enum class Mode : std::uint8_t { dry, wet, toWet, toDry, renewing };

    [[nodiscard]] bool wantsStretcher() const;
    [[nodiscard]] std::int64_t scaled(double framesAt44100) const;
    [[nodiscard]] std::int64_t fillTarget();
    void followSettings();
    void beginBlend(Mode mode, double framesAt44100);
    void renewStretcher();
    void makeStretchers(int sampleRate);
    void startStretcher(std::int64_t position);
    std::int64_t renderBlock(std::span<float> stereo);
    std::int64_t renderDry(std::span<float> stereo);
    std::int64_t renderWet(std::span<float> stereo);
    std::int64_t renderBlend(std::span<float> stereo);
    std::int64_t framesToEnd(std::int64_t limit) const;
    bool feedStretcher();
    void shapeEdges(std::span<float> stereo, double position);
    void emit(std::span<float> stereo, double position);
    bool beginOutput();
    [[nodiscard]] bool pushMark(OutputMark::Kind kind, std::int64_t outputFrame, double position, std::int64_t cutFrame = 0);

    OutputStage& m_output;
    MixedSource m_source;
    std::atomic<double> m_rate{ 1 };
    std::atomic<double> m_pitchCents{ 0 };

    std::unique_ptr<TimeStretcher> m_stretcher, m_spare;
    int m_stretcherRate = 0;
    bool m_spareIsReset = false;

    Mode m_mode = Mode::dry;
    bool m_begun = false;
    bool m_ended = true;
    /// Source frames per output frame in the present block.
    double m_slope = 1;
    /// The source frame of the next output frame.
    double m_position = 0;
    std::int64_t m_fed = 0;
    std::int64_t m_drop = 0;
    std::int64_t m_dryPosition = 0;
    std::int64_t m_blendAt = 0;
    std::int64_t m_blendFrames = 0;
    std::int64_t m_beginOutput = 0;
    std::int64_t m_rendered = 0;
    std::int64_t m_lastMark = 0;
    double m_markedSlope = 0;
    std::int64_t m_seenUnderruns = 0;
    std::int64_t m_cautiousFrames = 0;
    std::vector<float> m_block, m_other, m_feed, m_tail;
    MixedSource::Gains m_dryGains, m_wetGains, m_gainsNow;
    ThreadPriority m_priority = ThreadPriority::unchanged;
};

}  // namespace quillet
