// The end of the sound's road, run by the device callback: copies rendered frames out of the ring, crosses over from one run to
// the next as soon as that is ready, fades where the sound stops, is held or runs dry, equalises, limits, counts, and tells the
// main thread what has been handed over. It decodes and stretches nothing.
// Threads: three sides, divided by banners; the audio side neither allocates nor locks nor waits.
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
    /// The run that sounds or sounded last; 0 before the first.
    std::int64_t generation = 0;
    /// Passes of that run handed over to their last frame.
    std::int64_t passesEnded = 0;
    /// Nothing of the run is left.
    bool runEnded = false;
    /// Frames are being handed over: neither paused nor dry nor at an end.
    bool moving = false;
    /// The place in the output ring that comes next, and the one at which the run was entered.
    std::int64_t outputFrame = 0;
    std::int64_t enteredFrame = 0;
    /// Frames handed over since the run ended.
    std::int64_t framesSinceEnd = 0;
    /// When that was, on the steady clock.
    std::int64_t steadyNanoseconds = 0;
};

class OutputStage final : public OutputCallback {
public:
    /// `renderer` is woken whenever there is room again.
    explicit OutputStage(WakeSemaphore& renderer);

    // ---- Main thread ----

    /// Makes run `generation` (greater than any before) what is to be heard, as soon as it is ready; until then what sounds
    /// goes on.
    void enterRun(std::int64_t generation) { m_wanted.store(generation << 1 | 1, std::memory_order_release); }
    /// Silence from now on; `generation` is greater than any before.
    void enterSilence(std::int64_t generation) { m_wanted.store(generation << 1, std::memory_order_release); }
    /// Holds the run of this generation where it is; `resume` lets it go on.
    void pause(std::int64_t generation) { m_pausedGeneration.store(generation, std::memory_order_release); }
    /// Does nothing if another run than this is paused: that one stays silent until this one comes.
    void resume(std::int64_t generation)
    {
        if (m_pausedGeneration.load(std::memory_order_relaxed) == generation)
            pause(0);
    }
    /// Lets the limiter act; off where nothing changes the samples, so that they pass bit for bit.
    void setLimiting(bool on) { m_limiting.store(on, std::memory_order_relaxed); }
    [[nodiscard]] Equalizer& equalizer() { return m_equalizer; }
    [[nodiscard]] OutputReport report() { return m_report.read(); }
    /// Readable when a run was entered, or a pass or a run has ended, since it was cleared.
    [[nodiscard]] WakeDescriptor& news() { return m_news; }
    [[nodiscard]] OutputPlaces& places() { return m_places; }

    /// Any thread: how often the frames ran out in mid-sound, and the most frames the device has asked for at once.
    [[nodiscard]] std::int64_t underruns() const { return m_underruns.load(std::memory_order_relaxed); }
    [[nodiscard]] std::int64_t maxBlock() const { return m_maxBlock.load(std::memory_order_relaxed); }

    // ---- Render thread ----

    [[nodiscard]] AudioRing& ring() { return m_ring; }
    [[nodiscard]] OutputMarks& marks() { return m_marks; }

    // ---- Audio thread ----

    void streamBegins(std::int64_t blockFrames) override { m_maxBlock.store(blockFrames, std::memory_order_relaxed); }
    void render(std::span<float> stereo) QUILLET_REALTIME override;
    [[nodiscard]] bool isReady(std::int64_t frames) const QUILLET_REALTIME override;

private:
    /// Twice what two of the largest blocks of a device take, for two runs side by side.
    static constexpr std::int64_t ringFrames = 131072;
    static constexpr std::int64_t maxFade = 2048;

    [[nodiscard]] std::int64_t wantedGeneration() const QUILLET_REALTIME;
    [[nodiscard]] bool wantsRun() const QUILLET_REALTIME;
    void fillBlock(std::span<float> stereo) QUILLET_REALTIME;
    void followWanted(std::int64_t frames) QUILLET_REALTIME;
    void followPause() QUILLET_REALTIME;
    [[nodiscard]] bool isAudible() const QUILLET_REALTIME;
    [[nodiscard]] const OutputMark* beginOf(std::int64_t generation) const QUILLET_REALTIME;
    [[nodiscard]] bool knowsEndOf(std::int64_t generation) const QUILLET_REALTIME;
    [[nodiscard]] std::int64_t entryOf(const OutputMark& begin) const QUILLET_REALTIME;
    [[nodiscard]] bool canEnter(const OutputMark& begin, std::int64_t frames) const QUILLET_REALTIME;
    [[nodiscard]] bool canGoOn(std::int64_t frames) const QUILLET_REALTIME;
    void enter(const OutputMark& begin) QUILLET_REALTIME;
    void enterNothing(std::int64_t generation) QUILLET_REALTIME;
    [[nodiscard]] std::int64_t framesOfRun() const QUILLET_REALTIME;
    [[nodiscard]] std::int64_t copyRun(std::span<float> stereo) QUILLET_REALTIME;
    void runDry(std::span<float> stereo) QUILLET_REALTIME;
    void beginFadeIn(std::int64_t frames) QUILLET_REALTIME;
    std::int64_t beginTail(std::int64_t frames) QUILLET_REALTIME;
    void addTail(std::span<float> stereo) QUILLET_REALTIME;
    void passMarks() QUILLET_REALTIME;
    [[nodiscard]] std::int64_t fade(double seconds) const QUILLET_REALTIME;
    void reportProgress(bool moving) QUILLET_REALTIME;

    WakeSemaphore& m_renderer;
    AudioRing m_ring{ ringFrames, 2 };
    OutputMarks m_marks;
    OutputPlaces m_places;
    TripleBuffer<OutputReport> m_report;
    WakeDescriptor m_news;
    Equalizer m_equalizer;
    Limiter m_limiter;

    /// The wanted generation, shifted up by one bit; the lowest bit says whether it is a run.
    std::atomic<std::int64_t> m_wanted{ 0 };
    std::atomic<std::int64_t> m_pausedGeneration{ 0 };
    std::atomic<bool> m_limiting{ false };
    std::atomic<std::int64_t> m_underruns{ 0 };
    std::atomic<std::int64_t> m_maxBlock{ 0 };

    // Audio thread: the run that sounds.
    std::int64_t m_generation = 0;
    int m_sampleRate = 44100;
    std::int64_t m_framesNeeded = 0;
    std::int64_t m_enteredFrame = 0;
    std::int64_t m_passesEnded = 0;
    std::int64_t m_framesSinceEnd = 0;
    bool m_ended = true;
    bool m_paused = false;
    bool m_dry = false;
    bool m_hasNews = false;
    // How far its beginning has risen, and what still fades of the sound before it.
    std::int64_t m_fadeAt = 0, m_fadeFrames = 0;
    std::array<float, 2 * maxFade> m_tail{};
    std::int64_t m_tailAt = 0, m_tailFrames = 0;
};

}  // namespace quillet
