// Sums of the absolute values of decoded sound, mixed to one channel, taken from the decoder's own sample format. All are sums
// of integers (floats are cut to 1/2^36 of full scale first), so that they do not depend on where the sound is cut. And what
// both channels together look like.
// Threads: pure functions.
#pragma once

#include "platform/media/AmplitudeReader.h"
#include "platform/media/FfmpegHandles.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <span>

namespace quillet {

/// Of frames [first, first + frames) of `sound`, which has them: the sum of |left + right| / 2, or |sample| of a single
/// channel; full scale is 1. Floats that are no numbers, or absurd, count as 0. Nothing for formats with more channels, or of a
/// kind that is not dealt with here.
[[nodiscard]] std::optional<double> amplitudeSum(const AVFrame& sound, std::int64_t first, std::int64_t frames);

/// The same of interleaved stereo.
[[nodiscard]] double amplitudeSum(std::span<const float> stereo);

/// The samples of a stretch, taken piece by piece.
class SampleTally {
public:
    /// Frames as for `amplitudeSum`, all their samples; false for the formats that it has no answer for.
    [[nodiscard]] bool add(const AVFrame& sound, std::int64_t first, std::int64_t frames);
    void add(std::span<const float> samples);
    void addSilence(std::int64_t samples);

    /// After at least one sample.
    [[nodiscard]] SoundSummary summary() const;

private:
    template <typename Kind, typename Sample> void addFrames(const AVFrame& sound, std::int64_t first, std::int64_t frames);
    template <typename Kind, typename Sample> void addSamples(const Sample* samples, std::int64_t count);

    float m_lowest = std::numeric_limits<float>::infinity();
    float m_highest = -std::numeric_limits<float>::infinity();
    double m_squares = 0;
    std::int64_t m_count = 0;
};

}  // namespace quillet
