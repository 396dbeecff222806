// Measures recorded or rendered sound: where it begins and pauses, its pitch and level, where it stands within other sound.
// Written for tests, plainly rather than fast; it knows nothing of files and devices.
// Threads: any. Samples are those of one channel; frames are counted from 0.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quillet {

/// One channel (0 left, 1 right) of interleaved stereo.
std::vector<float> channelOf(std::span<const float> stereo, int channel);

/// The frames from `first` on.
inline std::span<const float> part(std::span<const float> samples, std::int64_t first, std::int64_t count)
{
    return samples.subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(count));
}

/// Samples between ±`level`, the same on every call.
std::vector<float> whiteNoise(std::int64_t count, float level);

/// The first frame at or after `from` that is louder than `threshold`.
std::optional<std::int64_t> firstSound(std::span<const float> samples, float threshold = 0, std::int64_t from = 0);

/// The number of frames up to the last one that is not zero.
std::int64_t soundingLength(std::span<const float> samples);

struct Gap {
    std::int64_t firstFrame = 0;
    std::int64_t frameCount = 0;
    bool operator==(const Gap&) const = default;
};

/// Runs of at least `minimumFrames` frames that are nowhere louder than `threshold`, between the first and the last sound.
std::vector<Gap> gaps(std::span<const float> samples, std::int64_t minimumFrames, float threshold = 0);

/// Root mean square; 0 for nothing.
double rms(std::span<const float> samples);

/// The largest difference between neighbours.
float maxStep(std::span<const float> samples);

/// The amplitude of a tone of so many cycles per frame, as far as a Hann window over all samples can tell.
double toneSize(std::span<const float> samples, double frequency);

/// Of a steady tone without noise, by its periods: true to a thousandth of a cent from half a second on. 0 without a period.
double toneFrequencyHz(std::span<const float> samples, int sampleRate);

double centsBetween(double frequencyHz, double referenceHz);

struct Alignment {
    std::int64_t offset = 0;
    /// 1 where the sound is the same but for its level, 0 where it is unrelated.
    double correlation = 0;
};

/// Where `part` fits best into `whole`: part[i] is whole[offset + i]. It costs part × (whole − part) multiplications.
Alignment findIn(std::span<const float> whole, std::span<const float> part);

}  // namespace quillet
