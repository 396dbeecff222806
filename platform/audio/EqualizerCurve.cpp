#include "platform/audio/EqualizerCurve.h"

#include <cmath>
#include <numbers>

namespace quillet {
namespace {

constexpr double bandwidthOctaves = 1.0;
constexpr double highestCentre = 0.49;

}  // namespace

EqualizerBand::EqualizerBand(double centreHz, double sampleRate)
    : active(centreHz < highestCentre * sampleRate)
{
    if (!active)
        return;
    const double angle = 2 * std::numbers::pi * centreHz / sampleRate;
    warpedCentre = std::tan(angle / 2);
    inverseQ = 2 * std::sinh(std::numbers::ln2 / 2 * bandwidthOctaves * angle / std::sin(angle));
}

double bandResponseDb(const EqualizerBand& band, double gainDb, double frequencyHz, double sampleRate)
{
    if (!band.active)
        return 0;
    // H(s) = (s² + s A/Q + 1) / (s² + s/(A Q) + 1) at s = j x, x the warped frequency over the warped centre.
    const double x = std::tan(std::numbers::pi * frequencyHz / sampleRate) / band.warpedCentre;
    const double amplitude = std::pow(10.0, gainDb / 40);
    const double resonance = (1 - x * x) * (1 - x * x);
    const double boost = x * amplitude * band.inverseQ;
    const double damping = x / amplitude * band.inverseQ;
    return 10 * std::log10((resonance + boost * boost) / (resonance + damping * damping));
}

BandGains separatedGains(const BandGains& wantedDb, double sampleRate)
{
    std::array<EqualizerBand, EqualizerNode::bandCount> bands;
    for (std::size_t i = 0; i < bands.size(); ++i)
        bands[i] = EqualizerBand(EqualizerNode::frequenciesHz[i], sampleRate);

    BandGains gains = wantedDb;
    for (int round = 0; round < 50; ++round) {
        double worst = 0;
        BandGains next = gains;
        for (std::size_t i = 0; i < bands.size(); ++i) {
            if (!bands[i].active)
                continue;
            double sum = 0;
            for (std::size_t j = 0; j < bands.size(); ++j)
                sum += bandResponseDb(bands[j], gains[j], EqualizerNode::frequenciesHz[i], sampleRate);
            next[i] += wantedDb[i] - sum;
            worst = std::max(worst, std::abs(wantedDb[i] - sum));
        }
        if (worst < 0.005)
            break;
        gains = next;
    }
    return gains;
}

}  // namespace quillet
