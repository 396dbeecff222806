// The arithmetic of the five-band equaliser: one parametric band's filter, its gain at any frequency, and the gains that the
// bands need so that together they give exactly what was set at every band's centre (neighbouring bells overlap by up to 2 dB).
// Threads: pure functions, any thread; none of them allocates.
#pragma once

#include "platform/audio/AudioGraph.h"
#include "platform/base/RealtimeScope.h"

#include <array>

namespace quillet {

using BandGains = std::array<double, EqualizerNode::bandCount>;

/// What of a band does not depend on its gain. One octave wide between the points of half the gain in dB, the bandwidth
/// corrected for the bilinear transform's warping (R. Bristow-Johnson, "Cookbook formulae for audio equalizer biquad filter
/// coefficients").
struct EqualizerBand {
    EqualizerBand() = default;
    /// A band at or above 49 % of the sample rate cannot exist there and stays inactive.
    EqualizerBand(double centreHz, double sampleRate);

    bool active = false;
    /// tan(π f / fs): the warped centre frequency.
    double warpedCentre = 0;
    double inverseQ = 0;
};

/// The gain in dB of `band` set to `gainDb`, at `frequencyHz`.
[[nodiscard]] double bandResponseDb(const EqualizerBand& band, double gainDb, double frequencyHz, double sampleRate);

/// The gains to give to the single bands so that the whole equaliser has `wantedDb` at each active band's centre, within 0.01
/// dB.
[[nodiscard]] BandGains separatedGains(const BandGains& wantedDb, double sampleRate);

}  // namespace quillet
