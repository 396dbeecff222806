// A chirp whose frequency tells the time in it, and where in it a recording is: the truth for positions through changes of
// speed and pitch.
// Threads: none of its own.
#pragma once

#include "tests/support/MemoryAudioFile.h"
#include "tests/support/SignalAnalysis.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <numbers>
#include <optional>
#include <span>

namespace quillet {

class ChirpTracker {
public:
    static constexpr double startHz = 300;
    static constexpr double hzPerSecond = 800;

    static std::shared_ptr<MemoryAudioFile> file(int sampleRate, double seconds)
    {
        return std::make_shared<MemoryAudioFile>(sampleRate, static_cast<std::int64_t>(seconds * sampleRate), [](double t) {
            return 0.5 * std::sin(2 * std::numbers::pi * (startHz * t + hzPerSecond / 2 * t * t));
        });
    }

    /// The seconds of the chirp that are heard in the middle of `samples` (some 20 ms), at this pitch; nothing where it is no
    /// tone.
    static std::optional<double> secondsAt(std::span<const float> samples, int sampleRate, double pitchCents)
    {
        const double hertz = toneFrequencyHz(samples, sampleRate);
        if (hertz * static_cast<double>(samples.size()) / sampleRate < 5)
            return std::nullopt;
        // As of the middle between the crossings, which is not quite that of the samples.
        return (hertz / std::exp2(pitchCents / 1200) - startHz) / hzPerSecond;
    }
};

}  // namespace quillet
