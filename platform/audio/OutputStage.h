// The end of the sound's road, run by the device callback: copies rendered frames out of the ring, fades where the sound stops
// or is held, drops what belongs to an older take, equalises, limits, counts, and tells the main thread what has been heard. It
// decodes and stretches nothing. Threads: three sides, divided by banners; the audio side neither allocates nor locks nor
// waits.
#pragma once

#include "platform/audio/AudioRing.h"
#include "platform/audio/Equalizer.h"
#include "platform/audio/Limiter.h"
#include "platform/audio/OutputDevice.h"
#include "platform/audio/OutputMark.h"
#include "platform/base/TripleBuffer.h"
#include "platform/base/WakeDescriptor.h"
#include "platform/base/WakeSemaphore.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <span>

namespace quillet {

/// What the device has been handed so far.
struct OutputReport {
    /// The take that sounds or sounded last; 0 before the first.
    std::int64_t epoch = 0;
    /// Passes of that take handed over to their last frame.
    std::int64_t passesEnded = 0;
    /// Nothing of the take is left.
    bool takeEnded = false;
    /// Source frames since the take's start, and source frames per output frame (0 while nothing moves).
    double sourceFrame = 0;
    double slope = 0;
    /// When that was, on the steady clock.
    std::int64_t steadyNanoseconds = 0;
};

class OutputStage final : public OutputCallback {
public:
    /// `renderer` is woken whenever there is room again.
    explicit OutputStage(WakeSemaphore& renderer);

    // ---- Main thread ----

    /// Makes `epoch` (greater than any before) what is to be heard; what sounds is faded out. Without a take it is silence.
    enum class Content { silence, take };
    void setEpoch(std::int64_t epoch, Content content);
    /// Holds the take of this epoch where it is; `resume` lets it go on.
    void pause(std::int64_t epoch) { m_pausedEpoch.store(epoch, std::memory_order_release); }
    void resume() { pause(0); }
    /// Forbids the take of this epoch to go on behind the pass that sounds.
    void closeTake(std::int64_t epoch) { m_closedEpoch.store(epoch, std::memory_order_release); }
    /// Lets the limiter act; off where nothing changes the samples, so that they pass bit for bit.
    void setLimiting(bool on) { m_limiting.store(on, std::memory_order_relaxed); }
    [[nodiscard]] Equalizer& equalizer() { return m_equalizer; }
    [[nodiscard]] OutputReport report() { return m_report.read(); }
    /// Readable when a pass or a take has ended since it was cleared.
    [[nodiscard]] WakeDescriptor& endings() { return m_endings; }

    /// Any thread: how often the frames ran out in mid-sound.
    [[nodiscard]] std::int64_t underruns() const { return m_underruns.load(std::memory_order_relaxed); }

    // ---- Render thread ----

    [[nodiscard]] AudioRing& ring() { return m_ring; }
    [[nodiscard]] OutputMarks& marks() { return m_marks; }

    // ---- Audio thread ----

    void render(std::span<float> stereo) QUILLET_REALTIME override;
    [[nodiscard]] bool isReady(std::int64_t frames) const QUILLET_REALTIME override;

private:
    static constexpr std::int64_t ringFrames = 65536;
    /// 4.4 ms at 44.1 kHz.
    static constexpr int fadeFrames = 192;

    [[nodiscard]] std::int64_t wantedEpoch() const QUILLET_REALTIME;
    [[nodiscard]] const OutputMark* findCut() const QUILLET_REALTIME;
    std::int64_t copySound(std::span<float> stereo) QUILLET_REALTIME;
    std::int64_t copyBlock(std::span<float> stereo, bool fallSilent) QUILLET_REALTIME;
    bool enterTake(std::int64_t epoch) QUILLET_REALTIME;
    void passMarks() QUILLET_REALTIME;
    void passMark(const OutputMark& mark) QUILLET_REALTIME;
    [[nodiscard]] bool hasStarted() QUILLET_REALTIME;
    [[nodiscard]] const OutputMark* findMark(OutputMark::Kind kind, std::int64_t epoch) const QUILLET_REALTIME;
    void reportProgress(bool moving) QUILLET_REALTIME;

    WakeSemaphore& m_renderer;
    AudioRing m_ring{ ringFrames, 2 };
    OutputMarks m_marks;
    TripleBuffer<OutputReport> m_report;
    WakeDescriptor m_endings;
    Equalizer m_equalizer;
    Limiter m_limiter;
    std::array<float, fadeFrames + 1> m_fade{};

    /// The wanted epoch, shifted up by one bit; the lowest bit says whether it has a take.
    std::atomic<std::int64_t> m_wanted{ 0 };
    std::atomic<std::int64_t> m_closedEpoch{ 0 };
    std::atomic<std::int64_t> m_pausedEpoch{ 0 };
    std::atomic<bool> m_limiting{ false };
    std::atomic<std::int64_t> m_underruns{ 0 };

    // Audio thread.
    std::int64_t m_epoch = 0;
    std::int64_t m_framesNeeded = 0;
    bool m_waiting = false;
    bool m_ended = true;
    bool m_endingPassed = false;
    int m_level = 0;
    std::int64_t m_passesEnded = 0;
    std::int64_t m_markedOutput = 0;
    double m_markedSource = 0;
    double m_slope = 0;
};

}  // namespace quillet
