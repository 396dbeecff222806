#include "platform/media/FloatScale.h"

#include "platform/base/Require.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace quillet {
namespace {

constexpr std::int64_t places = 64;
/// 36 dB above full scale: no recording.
constexpr double loudestUsual = 64.0;
/// 80 dB below full scale: nothing is heard of it.
constexpr double softestUsual = 1e-4;
/// Full scale of 16, 24 and 32 bits, as powers of two.
constexpr std::array wholeNumberBits{ 15, 23, 31 };

template <typename Visit> void forEachSample(const AVFrame& sound, const Visit& visit)
{
    const bool isPlanar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(sound.format)) != 0;
    const int planes = isPlanar ? sound.ch_layout.nb_channels : 1;
    const int samples = sound.nb_samples * (isPlanar ? 1 : sound.ch_layout.nb_channels);
    for (int plane = 0; plane < planes; ++plane) {
        std::uint8_t* data = sound.extended_data[plane];
        for (int i = 0; i < samples; ++i)
            if (av_get_bytes_per_sample(static_cast<AVSampleFormat>(sound.format)) == sizeof(double))
                visit(reinterpret_cast<double*>(data)[i]);
            else
                visit(reinterpret_cast<float*>(data)[i]);
    }
}

bool holdsFloats(const AVFrame& sound)
{
    switch (av_get_packed_sample_fmt(static_cast<AVSampleFormat>(sound.format))) {
    case AV_SAMPLE_FMT_FLT:
    case AV_SAMPLE_FMT_DBL:
        return true;
    default:
        return false;
    }
}

/// The largest magnitude of the block at `position`; 0 where there is none. What is not a number counts as nothing.
double peakAt(AlignedDecoder& decoder, std::int64_t position)
{
    double peak = 0;
    decoder.enter(position);
    const auto block = decoder.next();
    if (block && block->sound != nullptr && holdsFloats(*block->sound))
        forEachSample(*block->sound, [&peak](double sample) {
            if (std::isfinite(sample))
                peak = std::max(peak, std::abs(sample));
        });
    return peak;
}

}  // namespace

FloatScale floatScaleOf(AlignedDecoder& decoder, std::int64_t length)
{
    if (!decoder.isUncompressedFloat())
        return {};
    std::vector<double> peaks;
    for (std::int64_t place = 0; place < places; ++place)
        if (const double peak = peakAt(decoder, length * place / places); peak > 0)
            peaks.push_back(peak);
    if (peaks.empty())
        return {};
    std::ranges::sort(peaks);
    if (peaks.back() < softestUsual)
        return { 1.0F, SampleLevel::farBelow };
    // A few damaged numbers say nothing of the rest.
    if (peaks[peaks.size() / 2] <= loudestUsual)
        return {};
    const double loud = peaks[peaks.size() * 9 / 10];
    const auto bits = std::ranges::find_if(wholeNumberBits, [loud](int b) { return loud <= std::ldexp(1.0, b); });
    return { std::ldexp(1.0F, -(bits != wholeNumberBits.end() ? *bits : wholeNumberBits.back())), SampleLevel::farAbove };
}

void scaleSamples(AVFrame& sound, float factor)
{
    if (!holdsFloats(sound))
        return;
    const int writable = av_frame_make_writable(&sound);
    REQUIRE(writable >= 0);
    forEachSample(sound, [factor](auto& sample) { sample *= factor; });
}

}  // namespace quillet
