// The equaliser's signal path: five state-variable bells in series whose gains glide, so that no change is heard but as a
// change of tone. At 0 dB in every band it is left out and the samples pass bit for bit. It does not keep the sound within full
// scale, and it does not work out what the bands need to reach what was set (separatedGains does).
// Threads: `setGains` on the main thread, the rest on the thread of the device callback; neither side waits for the other.
#pragma once

#include "platform/audio/EqualizerCurve.h"
#include "platform/audio/MovingSum.h"
#include "platform/base/RealtimeScope.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

namespace quillet {

class Equalizer {
    static_assert(std::atomic<double>::is_always_lock_free);

public:
    // ---- Main thread ----

    /// The gains in dB that the single bands glide to (separatedGains gives them), and the sample rate in Hz they were made
    /// for.
    void setGains(const BandGains& gainsDb, double sampleRate);

    // ---- Audio thread ----

    /// Filters interleaved stereo frames in place.
    void process(std::span<float> stereo) QUILLET_REALTIME;
    /// True while it changes the samples (or is about to).
    [[nodiscard]] bool isActive() const QUILLET_REALTIME;

private:
    /// A gain (not in dB) on its way to a target: three moving means in a row, in steps, so that it starts and arrives without
    /// a corner however often the target moves.
    class Glide {
    public:
        void jumpTo(double gain) QUILLET_REALTIME;
        void aimAt(double gain) QUILLET_REALTIME;
        void step() QUILLET_REALTIME;
        [[nodiscard]] double gain() const QUILLET_REALTIME { return m_gain; }
        [[nodiscard]] bool isMoving() const QUILLET_REALTIME { return m_stepsLeft > 0; }

    private:
        static constexpr std::size_t meanSteps = 32;
        static constexpr std::int64_t unity = std::int64_t{ 1 } << 40;
        static constexpr std::int64_t scale = meanSteps;
        MovingSum<meanSteps> m_first{ unity }, m_second{ unity * scale }, m_third{ unity * scale * scale };
        std::int64_t m_target = unity;
        int m_stepsLeft = 0;
        double m_gain = 1;
    };

    /// A bell as a trapezoidal state-variable filter (A. Simper, "Linear trapezoidal integrated SVF"): stable while its gain
    /// moves.
    struct Bell {
        EqualizerBand band;
        double targetDb = 0;
        Glide glide;
        /// The coefficients of the present frame, of the end of the present step, and how they change per frame until then.
        double a1 = 0, mix = 0;
        double endA1 = 0, endMix = 0;
        double slopeA1 = 0, slopeMix = 0;
        std::array<double, 2> first{}, second{};

        void start(const EqualizerBand& ofBand, double decibels) QUILLET_REALTIME;
        void takeTarget(double decibels) QUILLET_REALTIME;
        void beginStep(std::size_t frames) QUILLET_REALTIME;
        void takeCoefficients() QUILLET_REALTIME;
        void process(std::span<float> stereo) QUILLET_REALTIME;
        [[nodiscard]] bool isFlat() const QUILLET_REALTIME { return !glide.isMoving() && glide.gain() == 1; }
    };

    void takeSampleRate() QUILLET_REALTIME;

    std::array<std::atomic<double>, EqualizerNode::bandCount> m_targetDb{};
    std::atomic<double> m_wantedSampleRate{ 0 };

    double m_sampleRate = 0;
    std::size_t m_framesLeftInStep = 0;
    std::array<Bell, EqualizerNode::bandCount> m_bells;
};

}  // namespace quillet
