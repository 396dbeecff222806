// The equaliser's signal path: five state-variable bells in series whose gains glide, so that no change clicks. At 0 dB in
// every band it is left out and the samples pass bit for bit. Threads: `setGains` on the main thread, the rest on the thread of
// the device callback; neither side waits for the other.
#pragma once

#include "platform/audio/EqualizerCurve.h"
#include "platform/base/RealtimeScope.h"

#include <array>
#include <atomic>
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
    /// A bell as a trapezoidal state-variable filter (A. Simper, "Linear trapezoidal integrated SVF"): stable while its gain
    /// moves.
    struct Bell {
        EqualizerBand band;
        double gainDb = 0;
        double a1 = 0, a2 = 0, a3 = 0, mix = 0;
        std::array<double, 2> first{}, second{};

        void setGain(double decibels) QUILLET_REALTIME;
        void process(std::span<float> stereo) QUILLET_REALTIME;
    };

    void takeSampleRate() QUILLET_REALTIME;
    bool glide(Bell& bell, double targetDb, std::size_t frames) QUILLET_REALTIME;

    std::array<std::atomic<double>, EqualizerNode::bandCount> m_targetDb{};
    std::atomic<double> m_wantedSampleRate{ 0 };

    double m_sampleRate = 0;
    std::array<Bell, EqualizerNode::bandCount> m_bells;
};

}  // namespace quillet
