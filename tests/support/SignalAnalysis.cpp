#include "tests/support/SignalAnalysis.h"

#include "platform/base/Require.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <random>

namespace quillet {
namespace {

/// The samples seen through a Hann window, turned back by `frequency` (cycles per frame): size and phase of that tone at the
/// window's first frame.
std::complex<double> tone(std::span<const float> samples, double frequency)
{
    const std::complex<double> step = std::polar(1.0, -2 * std::numbers::pi * frequency);
    std::complex<double> turn = 1;
    std::complex<double> sum = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double x = static_cast<double>(i) / static_cast<double>(samples.size());
        sum += turn * (static_cast<double>(samples[i]) * (0.5 - 0.5 * std::cos(2 * std::numbers::pi * x)));
        turn *= step;
    }
    return sum;
}

}  // namespace

std::vector<float> channelOf(std::span<const float> stereo, int channel)
{
    std::vector<float> samples;
    samples.reserve(stereo.size() / 2);
    for (std::size_t i = static_cast<std::size_t>(channel); i < stereo.size(); i += 2)
        samples.push_back(stereo[i]);
    return samples;
}

std::vector<float> whiteNoise(std::int64_t count, float level)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> value(-level, level);
    std::vector<float> samples(static_cast<std::size_t>(count));
    std::ranges::generate(samples, [&] { return value(random); });
    return samples;
}

std::optional<std::int64_t> firstSound(std::span<const float> samples, float threshold, std::int64_t from)
{
    for (std::int64_t i = from; i < std::ssize(samples); ++i)
        if (std::abs(samples[static_cast<std::size_t>(i)]) > threshold)
            return i;
    return std::nullopt;
}

std::int64_t soundingLength(std::span<const float> samples)
{
    const auto last = std::find_if(samples.rbegin(), samples.rend(), [](float sample) { return sample != 0; });
    return samples.rend() - last;
}

std::vector<Gap> gaps(std::span<const float> samples, std::int64_t minimumFrames, float threshold)
{
    std::vector<Gap> found;
    auto previous = firstSound(samples, threshold);
    while (previous) {
        const auto next = firstSound(samples, threshold, *previous + 1);
        if (next && *next - *previous - 1 >= minimumFrames)
            found.push_back({ *previous + 1, *next - *previous - 1 });
        previous = next;
    }
    return found;
}

double rms(std::span<const float> samples)
{
    double sum = 0;
    for (const float sample : samples)
        sum += static_cast<double>(sample) * sample;
    return samples.empty() ? 0 : std::sqrt(sum / static_cast<double>(samples.size()));
}

float maxStep(std::span<const float> samples)
{
    float largest = 0;
    for (std::size_t i = 1; i < samples.size(); ++i)
        largest = std::max(largest, std::abs(samples[i] - samples[i - 1]));
    return largest;
}

double toneSize(std::span<const float> samples, double frequency)
{
    return 4 * std::abs(tone(samples, frequency)) / static_cast<double>(samples.size());
}

double toneFrequencyHz(std::span<const float> samples, int sampleRate)
{
    double first = -1;
    double last = -1;
    int periods = -1;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        if (samples[i - 1] >= 0 || samples[i] < 0)
            continue;
        const auto before = static_cast<double>(samples[i - 1]);
        last = static_cast<double>(i) - 1 + before / (before - static_cast<double>(samples[i]));
        first = ++periods == 0 ? last : first;
    }
    return periods > 0 ? periods / (last - first) * sampleRate : 0;
}

double centsBetween(double frequencyHz, double referenceHz) { return 1200 * std::log2(frequencyHz / referenceHz); }

Alignment findIn(std::span<const float> whole, std::span<const float> part)
{
    Alignment best;
    const double partSize = rms(part);
    for (std::size_t offset = 0; offset + part.size() <= whole.size(); ++offset) {
        const auto candidate = whole.subspan(offset, part.size());
        double sum = 0;
        for (std::size_t i = 0; i < part.size(); ++i)
            sum += static_cast<double>(candidate[i]) * part[i];
        const double size = rms(candidate) * partSize * static_cast<double>(part.size());
        const double correlation = size > 0 ? sum / size : 0;
        if (correlation > best.correlation)
            best = { static_cast<std::int64_t>(offset), correlation };
    }
    return best;
}

}  // namespace quillet
