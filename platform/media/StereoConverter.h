// Turns decoded blocks of any sample format into interleaved stereo floats: stereo passes bit-exactly (integers scaled by a
// power of two), mono is doubled bit-exactly, more channels are mixed down by the usual matrix, scaled so that it cannot clip.
// It keeps no sound between blocks and does not resample.
// Threads: confined to one thread at a time.
#pragma once

#include "platform/media/FfmpegHandles.h"

#include <vector>

namespace quillet {

class StereoConverter {
public:
    StereoConverter() = default;
    ~StereoConverter();
    StereoConverter(const StereoConverter&) = delete;
    StereoConverter& operator=(const StereoConverter&) = delete;

    /// As many frames as `frame` has, in place of what `stereo` holds; silence if its channels cannot be mixed. Samples that
    /// are no numbers, or absurd, become 0.
    void convert(const AVFrame& frame, std::vector<float>& stereo);

private:
    [[nodiscard]] bool prepare(const AVFrame& frame);

    FfmpegHandle<SwrContext> m_resampler;
    /// What `m_resampler` is set up for.
    AVChannelLayout m_layout{};
    int m_format = AV_SAMPLE_FMT_NONE;
};

}  // namespace quillet
