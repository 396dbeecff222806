// The first audio track of a file, block by block as its decoder gives it, from the start or from a jump. It knows the stream's
// own time stamps only: which frame of the file a block is, and how far ahead of a frame to jump, is decided above. Nothing but
// the file itself is opened, whatever the file says, and FFmpeg's messages go nowhere.
// Threads: confined to one thread at a time, except `readErrors`.
#pragma once

#include "platform/media/FfmpegHandles.h"
#include "platform/media/FfmpegTags.h"
#include "platform/media/FileInput.h"

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>

namespace quillet {

class FfmpegTrack {
public:
    /// Reads the headers; decodes nothing yet. `empty` is not answered for a track without packets: that shows when decoding.
    [[nodiscard]] static std::expected<std::unique_ptr<FfmpegTrack>, AudioFileError> open(const FilePath& path);

    /// Decodes the next block into `frame`; false at the end (and again after it, until a jump), and from when the disk refuses
    /// to be read until the next jump. Undecodable packets are left out.
    [[nodiscard]] bool decode();
    /// The block of the last `decode` that was true; valid until the next call.
    [[nodiscard]] const AVFrame& frame() const { return *m_frame; }
    /// That block, given away: `frame` holds nothing from then on.
    [[nodiscard]] FfmpegHandle<AVFrame> takeFrame();
    /// The start of `frame`; nothing if the stream does not say.
    [[nodiscard]] std::optional<std::int64_t> frameTicks() const;

    /// Whether the disk has refused to be read since the last jump began.
    [[nodiscard]] bool hasDiskFailed() const { return m_input->hasFailed(); }
    /// How often it has, ever. Any thread.
    [[nodiscard]] std::int64_t readErrors() const { return m_input->readErrors(); }

    /// Jumps towards `ticks`, or to the first packet if that is later. Containers mean to land at or before it, and most of
    /// them do. False if the file cannot be entered there; the track is then at an unknown place, until the next jump that
    /// succeeds.
    [[nodiscard]] bool seek(std::int64_t ticks);
    /// The stamp of the last packet, found without decoding; nothing if the stream does not say. A bare stream is indexed
    /// on the way, so that jumps are quick from then on. Leaves the track at an unknown place.
    [[nodiscard]] std::optional<std::int64_t> lastPacketTicks();

    [[nodiscard]] AVRational timeBase() const { return m_stream->time_base; }
    [[nodiscard]] AVCodecID codec() const { return m_stream->codecpar->codec_id; }
    /// The header's opinion of the duration in ticks, if it has one.
    [[nodiscard]] std::optional<std::int64_t> claimedTicks() const;
    /// Whether the container has no time stamps of its own.
    [[nodiscard]] bool isBareStream() const;
    /// What the container, or in Ogg the track, says of the song.
    [[nodiscard]] SongTags tags() const { return tagsOf(*m_format, *m_stream); }
    /// Why nothing at all came out of `decode`.
    [[nodiscard]] AudioFileError reasonForSilence() const;

private:
    FfmpegTrack() = default;
    [[nodiscard]] std::optional<AudioFileError> openContainer(const FilePath& path);
    [[nodiscard]] std::optional<AudioFileError> openDecoder();
    [[nodiscard]] bool readPacket();
    [[nodiscard]] bool isBeforeEntry() const;
    [[nodiscard]] std::optional<std::int64_t> walkToLastPacket();

    std::unique_ptr<FileInput> m_input;
    FfmpegHandle<AVFormatContext> m_format;
    FfmpegHandle<AVCodecContext> m_decoder;
    FfmpegHandle<AVPacket> m_packet{ av_packet_alloc() };
    FfmpegHandle<AVFrame> m_frame{ av_frame_alloc() };
    AVStream* m_stream = nullptr;
    /// Stream by which the container is searched: that of the pictures where only they are indexed.
    AVStream* m_seekStream = nullptr;
    std::optional<std::int64_t> m_firstTicks;
    std::optional<std::int64_t> m_entryTicks;
    /// The page that an Ogg stream was entered at carries no usable stamps: only the end of a page is stamped.
    std::optional<std::int64_t> m_pageOfEntry;
    bool m_stampsAreGuessed = false;
    bool m_isOgg = false;
    bool m_draining = false;
    bool m_sawPacket = false;
};

}  // namespace quillet
