#include "platform/media/AmplitudeSum.h"

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
};
struct Signed16 {
    static constexpr double fullScale = 0x1p15;
    static int value(std::int16_t sample) { return sample; }
};
struct Signed32 {
    static constexpr double fullScale = 0x1p31;
    static std::int64_t value(std::int32_t sample) { return sample; }
};
struct Float {
    /// Fine enough for what is far below what can be heard: it is drawn as loud as all else.
    static constexpr double fullScale = 0x1p36;
    /// 36 dB above full scale: no recording.
    static constexpr float loudest = 64.0F;
    static std::int64_t value(float sample)
    {
        const float sane = std::abs(sample) <= loudest ? sample : 0.0F;
        return static_cast<std::int64_t>(sane * 0x1p36F);
    }
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

}  // namespace quillet
