#include "platform/media/AmplitudeSum.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace quillet {
namespace {

/// Samples of one or two channels, the second null for mono; `stride` samples from one frame to the next.
template <typename Sample> struct Channels {
    const Sample* left;
    const Sample* right;
    std::ptrdiff_t stride;
};

template <typename Sample> Channels<Sample> channelsOf(const AVFrame& sound, std::int64_t first)
{
    const bool isStereo = sound.ch_layout.nb_channels == 2;
    const auto plane = [&](int i) { return reinterpret_cast<const Sample*>(sound.extended_data[i]); };
    if (av_sample_fmt_is_planar(static_cast<AVSampleFormat>(sound.format)) != 0)
        return { plane(0) + first, isStereo ? plane(1) + first : nullptr, 1 };
    const std::ptrdiff_t stride = isStereo ? 2 : 1;
    const Sample* begin = plane(0) + stride * first;
    return { begin, isStereo ? begin + 1 : nullptr, stride };
}

/// How a sample becomes an integer wide enough for the sum of two; `fullScale` is the integer of 1.
struct Unsigned8 {
    static constexpr double fullScale = 0x1p7;
    static int value(std::uint8_t sample) { return sample - 128; }
    static float amplitude(std::uint8_t sample) { return static_cast<float>(value(sample)) * 0x1p-7F; }
};
struct Signed16 {
    static constexpr double fullScale = 0x1p15;
    static int value(std::int16_t sample) { return sample; }
    static float amplitude(std::int16_t sample) { return static_cast<float>(sample) * 0x1p-15F; }
};
struct Signed32 {
    static constexpr double fullScale = 0x1p31;
    static std::int64_t value(std::int32_t sample) { return sample; }
    static float amplitude(std::int32_t sample) { return static_cast<float>(sample) * 0x1p-31F; }
};
struct Float {
    /// Fine enough for what is far below what can be heard: it is drawn as loud as all else.
    static constexpr double fullScale = 0x1p36;
    /// 36 dB above full scale: no recording.
    static constexpr float loudest = 64.0F;
    static float amplitude(float sample) { return std::abs(sample) <= loudest ? sample : 0.0F; }
    static std::int64_t value(float sample) { return static_cast<std::int64_t>(amplitude(sample) * 0x1p36F); }
};

template <typename Kind, typename Sample, std::ptrdiff_t stride>
std::int64_t sumOfMagnitudes(const Sample* left, const Sample* right, std::int64_t frames)
{
    std::int64_t sum = 0;
    if (right == nullptr)
        for (std::int64_t i = 0; i < frames; ++i)
            sum += std::abs(Kind::value(left[stride * i]));
    else
        for (std::int64_t i = 0; i < frames; ++i)
            sum += std::abs(Kind::value(left[stride * i]) + Kind::value(right[stride * i]));
    return sum;
}

template <typename Kind, typename Sample> double meanSum(const Channels<Sample>& channels, std::int64_t frames)
{
    const std::int64_t sum = channels.stride == 1 ? sumOfMagnitudes<Kind, Sample, 1>(channels.left, channels.right, frames)
                                                  : sumOfMagnitudes<Kind, Sample, 2>(channels.left, channels.right, frames);
    return static_cast<double>(sum) / (channels.right == nullptr ? Kind::fullScale : 2 * Kind::fullScale);
}

}  // namespace

std::optional<double> amplitudeSum(const AVFrame& sound, std::int64_t first, std::int64_t frames)
{
    if (sound.ch_layout.nb_channels > 2)
        return std::nullopt;
    switch (sound.format) {
    case AV_SAMPLE_FMT_U8:
    case AV_SAMPLE_FMT_U8P:
        return meanSum<Unsigned8>(channelsOf<std::uint8_t>(sound, first), frames);
    case AV_SAMPLE_FMT_S16:
    case AV_SAMPLE_FMT_S16P:
        return meanSum<Signed16>(channelsOf<std::int16_t>(sound, first), frames);
    case AV_SAMPLE_FMT_S32:
    case AV_SAMPLE_FMT_S32P:
        return meanSum<Signed32>(channelsOf<std::int32_t>(sound, first), frames);
    case AV_SAMPLE_FMT_FLT:
    case AV_SAMPLE_FMT_FLTP:
        return meanSum<Float>(channelsOf<float>(sound, first), frames);
    default:
        return std::nullopt;
    }
}

double amplitudeSum(std::span<const float> stereo)
{
    const Channels<float> channels{ stereo.data(), stereo.data() + 1, 2 };
    return meanSum<Float>(channels, static_cast<std::int64_t>(stereo.size() / 2));
}

// ---- SampleTally ----

template <typename Kind, typename Sample> void SampleTally::addSamples(const Sample* samples, std::int64_t count)
{
    // Side by side, for the processor's vectors.
    constexpr std::int64_t lanes = 8;
    std::array<float, lanes> lowest;
    std::array<float, lanes> highest;
    std::array<float, lanes> squares{};
    lowest.fill(m_lowest);
    highest.fill(m_highest);
    const auto take = [&](std::size_t lane, Sample sample) {
        const float amplitude = Kind::amplitude(sample);
        lowest[lane] = amplitude < lowest[lane] ? amplitude : lowest[lane];
        highest[lane] = amplitude > highest[lane] ? amplitude : highest[lane];
        squares[lane] += amplitude * amplitude;
    };
    const std::int64_t whole = count - count % lanes;
    for (std::int64_t i = 0; i < whole; i += lanes)
        for (std::size_t lane = 0; lane < lanes; ++lane)
            take(lane, samples[i + static_cast<std::int64_t>(lane)]);
    for (std::int64_t i = whole; i < count; ++i)
        take(0, samples[i]);
    m_lowest = *std::ranges::min_element(lowest);
    m_highest = *std::ranges::max_element(highest);
    for (const float square : squares)
        m_squares += static_cast<double>(square);
    m_count += count;
}

template <typename Kind, typename Sample>
void SampleTally::addFrames(const AVFrame& sound, std::int64_t first, std::int64_t frames)
{
    const auto channels = channelsOf<Sample>(sound, first);
    if (channels.stride == 2) {
        addSamples<Kind>(channels.left, 2 * frames);
        return;
    }
    addSamples<Kind>(channels.left, frames);
    if (channels.right != nullptr)
        addSamples<Kind>(channels.right, frames);
}

bool SampleTally::add(const AVFrame& sound, std::int64_t first, std::int64_t frames)
{
    if (sound.ch_layout.nb_channels > 2)
        return false;
    switch (sound.format) {
    case AV_SAMPLE_FMT_U8:
    case AV_SAMPLE_FMT_U8P:
        addFrames<Unsigned8, std::uint8_t>(sound, first, frames);
        return true;
    case AV_SAMPLE_FMT_S16:
    case AV_SAMPLE_FMT_S16P:
        addFrames<Signed16, std::int16_t>(sound, first, frames);
        return true;
    case AV_SAMPLE_FMT_S32:
    case AV_SAMPLE_FMT_S32P:
        addFrames<Signed32, std::int32_t>(sound, first, frames);
        return true;
    case AV_SAMPLE_FMT_FLT:
    case AV_SAMPLE_FMT_FLTP:
        addFrames<Float, float>(sound, first, frames);
        return true;
    default:
        return false;
    }
}

void SampleTally::add(std::span<const float> samples)
{
    addSamples<Float>(samples.data(), static_cast<std::int64_t>(samples.size()));
}

void SampleTally::addSilence(std::int64_t samples)
{
    m_lowest = std::min(m_lowest, 0.0F);
    m_highest = std::max(m_highest, 0.0F);
    m_count += samples;
}

SoundSummary SampleTally::summary() const
{
    return { m_lowest, m_highest, static_cast<float>(m_squares / static_cast<double>(m_count)) };
}

}  // namespace quillet
