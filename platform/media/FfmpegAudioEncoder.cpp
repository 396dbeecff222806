#include "platform/media/FfmpegAudioEncoder.h"

#include "platform/media/FfmpegHandles.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>
#include <vector>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/mathematics.h>
}

namespace quillet {
namespace {

constexpr int ioBytes = 1 << 16;
/// Of encoders that take any number of frames at a time.
constexpr int freeFrameSize = 4096;

/// How a format is made. `encoder` by its name, since a format has several.
struct Recipe {
    const char* muxer;
    const char* encoder;
    AVSampleFormat sampleFormat;
    /// 0: without loss.
    std::int64_t bitsPerSecond;
};

Recipe recipeOf(AudioFormat format)
{
    switch (format) {
    case AudioFormat::mp3:
        return { "mp3", "libmp3lame", AV_SAMPLE_FMT_FLTP, 256'000 };
    case AudioFormat::m4a:
        return { "ipod", "aac", AV_SAMPLE_FMT_FLTP, 256'000 };
    case AudioFormat::opus:
        return { "ogg", "libopus", AV_SAMPLE_FMT_FLT, 192'000 };
    case AudioFormat::flac:
        break;
    }
    return { "flac", "flac", AV_SAMPLE_FMT_S32, 0 };
}

struct MuxerDeleter {
    void operator()(AVFormatContext* muxer) const { avformat_free_context(muxer); }
};

class FfmpegAudioEncoder final : public AudioEncoder {
public:
    explicit FfmpegAudioEncoder(EncodedOutput& output)
        : m_output(output)
    {
    }

    /// False where the libraries here cannot.
    [[nodiscard]] bool open(const EncoderSettings& settings)
    {
        const Recipe recipe = recipeOf(settings.format);
        AVFormatContext* muxer = nullptr;
        const AVCodec* encoder = avcodec_find_encoder_by_name(recipe.encoder);
        if (encoder == nullptr || avformat_alloc_output_context2(&muxer, nullptr, recipe.muxer, nullptr) < 0)
            return false;
        m_muxer.reset(muxer);
        return openOutput() && openEncoder(*encoder, recipe, settings.sampleRate) && openStream(settings.tags) && openFrames();
    }

    [[nodiscard]] bool write(std::span<const float> stereo) override
    {
        while (m_isGood && !stereo.empty()) {
            const std::size_t room = static_cast<std::size_t>(2 * m_frameSize) - m_pending.size();
            const std::size_t count = std::min(room, stereo.size());
            m_pending.insert(m_pending.end(), stereo.begin(), stereo.begin() + static_cast<std::ptrdiff_t>(count));
            stereo = stereo.subspan(count);
            if (count == room)
                m_isGood = encodePending();
        }
        return m_isGood;
    }

    [[nodiscard]] bool finish() override
    {
        m_isGood =
            m_isGood && (m_pending.empty() || encodePending()) && encode(nullptr) && av_write_trailer(m_muxer.get()) >= 0;
        avio_flush(m_io.get());
        return m_isGood && m_io->error >= 0;
    }

private:
    [[nodiscard]] bool openOutput()
    {
        auto* buffer = static_cast<unsigned char*>(av_malloc(ioBytes));
        m_io.reset(avio_alloc_context(buffer, ioBytes, 1, this, nullptr, &writeBytes, m_output.canSeek() ? &seekTo : nullptr));
        m_muxer->pb = m_io.get();
        m_muxer->flags |= AVFMT_FLAG_CUSTOM_IO;
        return m_io != nullptr;
    }

    [[nodiscard]] bool openEncoder(const AVCodec& encoder, const Recipe& recipe, int sampleRate)
    {
        m_codec.reset(avcodec_alloc_context3(&encoder));
        m_codec->sample_rate = sampleRate;
        m_codec->sample_fmt = recipe.sampleFormat;
        m_codec->bit_rate = recipe.bitsPerSecond;
        if (recipe.sampleFormat == AV_SAMPLE_FMT_S32)
            m_codec->bits_per_raw_sample = 24;
        m_codec->time_base = { 1, sampleRate };
        av_channel_layout_default(&m_codec->ch_layout, 2);
        if ((m_muxer->oformat->flags & AVFMT_GLOBALHEADER) != 0)
            m_codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        return avcodec_open2(m_codec.get(), &encoder, nullptr) >= 0;
    }

    [[nodiscard]] bool openStream(const SongTags& tags)
    {
        m_stream = avformat_new_stream(m_muxer.get(), nullptr);
        if (m_stream == nullptr || avcodec_parameters_from_context(m_stream->codecpar, m_codec.get()) < 0)
            return false;
        m_stream->time_base = m_codec->time_base;
        for (const auto& [key, value] :
             { std::pair("title", &tags.title), { "artist", &tags.artist }, { "album", &tags.album } })
            if (!value->empty())
                av_dict_set(&m_muxer->metadata, key, value->c_str(), 0);
        // Without it what is written differs from run to run.
        m_muxer->flags |= AVFMT_FLAG_BITEXACT;
        return avformat_write_header(m_muxer.get(), nullptr) >= 0;
    }

    [[nodiscard]] bool openFrames()
    {
        m_frameSize = m_codec->frame_size > 0 ? m_codec->frame_size : freeFrameSize;
        m_pending.reserve(static_cast<std::size_t>(2 * m_frameSize));
        m_frame.reset(av_frame_alloc());
        m_packet.reset(av_packet_alloc());
        return m_frame != nullptr && m_packet != nullptr;
    }

    /// One frame of the codec's, which the last one may fall short of.
    [[nodiscard]] bool encodePending()
    {
        const int count = static_cast<int>(m_pending.size() / 2);
        av_frame_unref(m_frame.get());
        m_frame->nb_samples = count;
        m_frame->format = m_codec->sample_fmt;
        m_frame->sample_rate = m_codec->sample_rate;
        m_frame->pts = m_framesEncoded;
        if (av_channel_layout_copy(&m_frame->ch_layout, &m_codec->ch_layout) < 0 || av_frame_get_buffer(m_frame.get(), 0) < 0)
            return false;
        fillFrame(count);
        m_framesEncoded += count;
        m_pending.clear();
        return encode(m_frame.get());
    }

    void fillFrame(int count)
    {
        const auto cut = [](float sample) { return std::clamp(sample, -1.0F, 1.0F); };
        if (m_codec->sample_fmt == AV_SAMPLE_FMT_FLTP) {
            for (std::size_t channel = 0; channel < 2; ++channel) {
                auto* plane = reinterpret_cast<float*>(m_frame->data[channel]);
                for (int i = 0; i < count; ++i)
                    plane[i] = cut(m_pending[2 * static_cast<std::size_t>(i) + channel]);
            }
        } else if (m_codec->sample_fmt == AV_SAMPLE_FMT_FLT) {
            std::ranges::transform(m_pending, reinterpret_cast<float*>(m_frame->data[0]), cut);
        } else {
            // 24 bits in the upper part of 32.
            constexpr double fullScale = 0x1p23;
            auto* samples = reinterpret_cast<std::int32_t*>(m_frame->data[0]);
            std::ranges::transform(m_pending, samples, [](float sample) {
                const double value =
                    std::clamp(std::nearbyint(static_cast<double>(sample) * fullScale), -fullScale, fullScale - 1);
                return static_cast<std::int32_t>(value) * 256;
            });
        }
    }

    /// Null ends the sound.
    [[nodiscard]] bool encode(const AVFrame* frame)
    {
        if (avcodec_send_frame(m_codec.get(), frame) < 0)
            return false;
        for (;;) {
            const int received = avcodec_receive_packet(m_codec.get(), m_packet.get());
            if (received == AVERROR(EAGAIN) || received == AVERROR_EOF)
                return true;
            if (received < 0)
                return false;
            av_packet_rescale_ts(m_packet.get(), m_codec->time_base, m_stream->time_base);
            m_packet->stream_index = m_stream->index;
            if (av_interleaved_write_frame(m_muxer.get(), m_packet.get()) < 0 || m_io->error < 0)
                return false;
        }
    }

#if LIBAVFORMAT_VERSION_MAJOR >= 61
    static int writeBytes(void* self, const std::uint8_t* bytes, int count)
#else
    static int writeBytes(void* self, std::uint8_t* bytes, int count)
#endif
    {
        auto& output = static_cast<FfmpegAudioEncoder*>(self)->m_output;
        return output.write(std::as_bytes(std::span(bytes, static_cast<std::size_t>(count)))) ? count : AVERROR(EIO);
    }

    static std::int64_t seekTo(void* self, std::int64_t offset, int whence)
    {
        auto& output = static_cast<FfmpegAudioEncoder*>(self)->m_output;
        return whence == SEEK_SET && output.seek(offset) ? offset : AVERROR(EINVAL);
    }

    EncodedOutput& m_output;
    FfmpegHandle<AVIOContext> m_io;
    std::unique_ptr<AVFormatContext, MuxerDeleter> m_muxer;
    FfmpegHandle<AVCodecContext> m_codec;
    FfmpegHandle<AVFrame> m_frame;
    FfmpegHandle<AVPacket> m_packet;
    AVStream* m_stream = nullptr;
    int m_frameSize = 0;
    std::int64_t m_framesEncoded = 0;
    std::vector<float> m_pending;
    bool m_isGood = true;
};

}  // namespace

std::unique_ptr<AudioEncoder> FfmpegAudioEncoderMaker::make(const EncoderSettings& settings, EncodedOutput& output)
{
    auto encoder = std::make_unique<FfmpegAudioEncoder>(output);
    return encoder->open(settings) ? std::move(encoder) : nullptr;
}

}  // namespace quillet
