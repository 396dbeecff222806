#include "platform/media/StereoConverter.h"

#include <algorithm>
#include <array>
#include <cmath>

extern "C" {
#include <libavutil/opt.h>
}

namespace quillet {
namespace {

/// 36 dB above full scale: no recording, but what damaged files of floats hold (and what is not a number is not below it).
constexpr float loudestSample = 64.0F;

/// One or two channels are taken as they come: left and right whatever their names are.
void inputLayout(const AVChannelLayout& layout, AVChannelLayout& input)
{
    if (layout.nb_channels <= 2 || layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&input, layout.nb_channels);
    else
        av_channel_layout_copy(&input, &layout);
}

/// Every channel equally loud on both sides: for arrangements that have no matrix.
void mixEqually(SwrContext* resampler, int channels)
{
    const std::vector<double> matrix(2 * static_cast<std::size_t>(channels), 1.0 / channels);
    swr_set_matrix(resampler, matrix.data(), channels);
}

}  // namespace

StereoConverter::~StereoConverter() { av_channel_layout_uninit(&m_layout); }

bool StereoConverter::prepare(const AVFrame& frame)
{
    if (m_resampler != nullptr && m_format == frame.format && av_channel_layout_compare(&m_layout, &frame.ch_layout) == 0)
        return true;
    m_resampler.reset();
    m_format = frame.format;
    if (av_channel_layout_copy(&m_layout, &frame.ch_layout) < 0)
        return false;

    const int channels = frame.ch_layout.nb_channels;
    AVChannelLayout input{};
    AVChannelLayout output{};
    inputLayout(frame.ch_layout, input);
    av_channel_layout_default(&output, std::min(channels, 2));
    for (const bool usual : { true, false }) {
        SwrContext* resampler = nullptr;
        const int made = swr_alloc_set_opts2(&resampler, &output, AV_SAMPLE_FMT_FLT, frame.sample_rate, &input,
                                             static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
        FfmpegHandle<SwrContext> owner(resampler);
        if (made < 0)
            continue;
        av_opt_set_double(resampler, "rematrix_maxval", 1.0, 0);
        if (!usual)
            mixEqually(resampler, channels);
        if (swr_init(resampler) >= 0) {
            m_resampler = std::move(owner);
            break;
        }
    }
    av_channel_layout_uninit(&input);
    av_channel_layout_uninit(&output);
    return m_resampler != nullptr;
}

void StereoConverter::convert(const AVFrame& frame, std::vector<float>& stereo)
{
    const auto frames = static_cast<std::size_t>(frame.nb_samples);
    stereo.assign(2 * frames, 0.0F);
    if (!prepare(frame))
        return;
    const bool mono = frame.ch_layout.nb_channels == 1;
    // Mono is written into the second half and spread from there, front to back.
    float* out = mono ? stereo.data() + frames : stereo.data();
    std::array<std::uint8_t*, 1> planes{ reinterpret_cast<std::uint8_t*>(out) };
    const int done = swr_convert(m_resampler.get(), planes.data(), frame.nb_samples,
                                 const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples);
    if (done != frame.nb_samples) {
        std::ranges::fill(stereo, 0.0F);
        return;
    }
    if (mono)
        for (std::size_t i = 0; i < frames; ++i)
            stereo[2 * i] = stereo[2 * i + 1] = stereo[frames + i];
    // One damaged float would ring in the filters after it for ever.
    for (float& sample : stereo)
        if (!(std::abs(sample) <= loudestSample))
            sample = 0.0F;
}

}  // namespace quillet
