// Owners of the objects that FFmpeg allocates, for use inside this folder. Each frees its object the way FFmpeg asks for; none
// adds behaviour of its own.
// Threads: as FFmpeg's objects, each confined to one thread at a time.
#pragma once

#include <cstdint>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
}

namespace quillet {

struct FfmpegDeleter {
    void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(SwrContext* resampler) const { swr_free(&resampler); }
    /// The buffer may be another one than the context was made with: FFmpeg replaces it while it probes.
    void operator()(AVIOContext* io) const
    {
        av_freep(&io->buffer);
        avio_context_free(&io);
    }
};

template <typename T> using FfmpegHandle = std::unique_ptr<T, FfmpegDeleter>;

}  // namespace quillet
