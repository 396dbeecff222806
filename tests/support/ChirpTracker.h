// A chirp whose frequency tells the time in it, and where in it a recording is: the truth for positions through changes of
// speed and pitch.
// Threads: none of its own.
#pragma once

#include "tests/support/MemoryAudioFile.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <numbers>
#include <optional>
#include <span>
#include <vector>

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
        double first = -1;
        double last = -1;
        int periods = 0;
        for (std::size_t i = 1; i < samples.size(); ++i) {
            if (samples[i - 1] >= 0 || samples[i] < 0)
                continue;
            const auto before = static_cast<double>(samples[i - 1]);
            const double at = static_cast<double>(i) - 1 + before / (before - static_cast<double>(samples[i]));
            if (first < 0)
                first = at;
            else
                ++periods;
            last = at;
        }
        if (periods < 4)
            return std::nullopt;
        const double hertz = periods / (last - first) * sampleRate / std::exp2(pitchCents / 1200);
        // As of the middle between the crossings, which is not quite that of the samples.
        return (hertz - startHz) / hzPerSecond;
    }
};

}  // namespace quillet
