#include "tools/demo/Room.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quillet {
namespace {

/// A delay that feeds itself, its treble lost bit by bit.
void addComb(const std::vector<float>& input, std::vector<float>& output, std::size_t delay, float feedback)
{
    constexpr float damping = 0.35F;
    std::vector<float> line(delay);
    float dull = 0;
    for (std::size_t i = 0; i < input.size(); ++i) {
        float& slot = line[i % delay];
        output[i] += slot;
        dull += (1 - damping) * (slot - dull);
        slot = input[i] + feedback * dull;
    }
}

/// Smears in time, and leaves the spectrum as it is.
void smear(std::vector<float>& samples, std::size_t delay)
{
    constexpr float gain = 0.6F;
    std::vector<float> line(delay);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const float delayed = line[i % delay];
        const float input = samples[i] + gain * delayed;
        line[i % delay] = input;
        samples[i] = delayed - gain * input;
    }
}

std::vector<float> roomOfSide(const std::vector<float>& input, std::size_t spread)
{
    std::vector<float> output(input.size());
    // Frames, without common divisors.
    for (const std::size_t delay : std::array<std::size_t, 4>{ 1301, 1499, 1693, 1871 })
        addComb(input, output, delay + spread, 0.72F);
    for (const std::size_t delay : std::array<std::size_t, 2>{ 241, 557 })
        smear(output, delay + spread);
    return output;
}

}  // namespace

void mixInto(StereoSound& target, const StereoSound& source, double gain)
{
    for (std::size_t i = 0; i < source.frames(); ++i)
        target.add(i, gain * source.left[i], gain * source.right[i]);
}

StereoSound echoOf(const StereoSound& source, double delaySeconds, double feedback)
{
    StereoSound echo(source.frames());
    const auto delay = static_cast<std::size_t>(std::lround(delaySeconds * StereoSound::sampleRate));
    for (std::size_t i = delay; i < source.frames(); ++i) {
        const double middle = 0.5 * (source.left[i - delay] + source.right[i - delay]);
        echo.add(i, middle + feedback * echo.right[i - delay], feedback * echo.left[i - delay]);
    }
    return echo;
}

StereoSound roomOf(const StereoSound& source)
{
    StereoSound room(source.frames());
    room.left = roomOfSide(source.left, 0);
    room.right = roomOfSide(source.right, 23);
    return room;
}

void level(StereoSound& sound, double peakDb)
{
    const auto loudest = [&] {
        float peak = 0;
        for (const auto* side : { &sound.left, &sound.right })
            for (const float sample : *side)
                peak = std::max(peak, std::abs(sample));
        return peak;
    };
    const auto scale = [&](auto&& curve) {
        for (auto* side : { &sound.left, &sound.right })
            std::ranges::transform(*side, side->begin(), curve);
    };
    const float before = loudest();
    if (before == 0)
        return;
    scale([&](float sample) { return std::tanh(0.9F * sample / before); });
    const float gain = static_cast<float>(std::pow(10, peakDb / 20)) / loudest();
    scale([&](float sample) { return gain * sample; });
}

}  // namespace quillet
