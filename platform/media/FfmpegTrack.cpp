#include "platform/media/FfmpegTrack.h"

#include "platform/base/Require.h"
#include "platform/media/EntryRecipe.h"
#include "platform/media/MpegFrameWalk.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>
#include <vector>

namespace quillet {
namespace {

/// A container that reports errors without ever coming to an end is given up after so many in a row.
constexpr int maximalErrorsInARow = 10'000;

/// Packets whose places two ways of finding them have to agree on.
constexpr int packetsToCompare = 16;
/// An index of so many is kept whole (three hours of MP3, 10 MB); longer ones are thinned.
constexpr std::size_t mostIndexEntries = 420'000;

bool isKnown(const AVCodecParameters& parameters)
{
    return parameters.codec_id != AV_CODEC_ID_NONE && parameters.sample_rate > 0 && parameters.ch_layout.nb_channels > 0;
}

const AVCodec* decoderOf(AVCodecID id)
{
    const char* preferred = preferredDecoder(id);
    const AVCodec* codec = preferred != nullptr ? avcodec_find_decoder_by_name(preferred) : nullptr;
    return codec != nullptr ? codec : avcodec_find_decoder(id);
}

AVStream* firstAudioStream(const AVFormatContext& format)
{
    AVStream* undecodable = nullptr;
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        AVStream* stream = format.streams[i];
        if (stream->codecpar->codec_type != AVMEDIA_TYPE_AUDIO)
            continue;
        if (avcodec_find_decoder(stream->codecpar->codec_id) != nullptr)
            return stream;
        if (undecodable == nullptr)
            undecodable = stream;
    }
    return undecodable;
}

/// Matroska indexes the pictures of a film only: searching it by the sound would read through the whole file.
AVStream* streamToSearchBy(const AVFormatContext& format, AVStream* audio)
{
    if (std::strstr(format.iformat->name, "matroska") == nullptr)
        return audio;
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        AVStream* stream = format.streams[i];
        if (stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO && (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0)
            return stream;
    }
    return audio;
}

std::optional<std::int64_t> stampOf(const AVPacket& packet)
{
    const std::int64_t ticks = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
    return ticks != AV_NOPTS_VALUE ? std::optional(ticks) : std::nullopt;
}

}  // namespace

std::expected<std::unique_ptr<FfmpegTrack>, AudioFileError> FfmpegTrack::open(const FilePath& path)
{
    av_log_set_level(AV_LOG_QUIET);
    std::unique_ptr<FfmpegTrack> track(new FfmpegTrack);
    REQUIRE(track->m_packet != nullptr && track->m_frame != nullptr);
    if (const auto error = track->openContainer(path))
        return std::unexpected(*error);
    if (const auto error = track->openDecoder())
        return std::unexpected(*error);
    return track;
}

std::optional<AudioFileError> FfmpegTrack::openContainer(const FilePath& path)
{
    auto input = FileInput::open(path);
    if (!input)
        return input.error();
    m_input = std::move(*input);

    AVFormatContext* format = avformat_alloc_context();
    REQUIRE(format != nullptr);
    format->pb = m_input->context();
    format->flags |= AVFMT_FLAG_CUSTOM_IO;
    // For telling whether the PCM of a WAV file is something else in disguise: the usual thousands take longer than all the
    // rest.
    format->max_probe_packets = 4;
    format->max_index_size = static_cast<unsigned>(mostIndexEntries * sizeof(AVIndexEntry)) + 4096;
    // The bytes come from `m_input`; the name is there for formats that are told by its extension alone. What the file itself
    // names (playlists do) would need a protocol: none is allowed.
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "none", 0);
    const int opened = avformat_open_input(&format, path.c_str(), nullptr, &options);
    av_dict_free(&options);
    if (opened < 0)
        return m_input->hasFailed() ? AudioFileError::unreadable : AudioFileError::notAudio;
    m_format.reset(format);

    m_stream = firstAudioStream(*m_format);
    if (m_stream == nullptr || !isKnown(*m_stream->codecpar)) {
        if (avformat_find_stream_info(m_format.get(), nullptr) < 0 && m_input->hasFailed())
            return AudioFileError::unreadable;
        m_stream = firstAudioStream(*m_format);
    }
    if (m_stream == nullptr)
        return m_format->nb_streams > 0 ? AudioFileError::noAudioTrack : AudioFileError::notAudio;
    m_isOgg = std::strcmp(m_format->iformat->name, "ogg") == 0;
    m_seekStream = streamToSearchBy(*m_format, m_stream);
    for (unsigned i = 0; i < m_format->nb_streams; ++i) {
        AVStream* stream = m_format->streams[i];
        if (stream != m_stream)
            stream->discard = AVDISCARD_ALL;
    }
    return std::nullopt;
}

std::optional<AudioFileError> FfmpegTrack::openDecoder()
{
    const AVCodec* codec = decoderOf(m_stream->codecpar->codec_id);
    if (codec == nullptr)
        return AudioFileError::unreadable;
    m_decoder.reset(avcodec_alloc_context3(codec));
    REQUIRE(m_decoder != nullptr);
    if (avcodec_parameters_to_context(m_decoder.get(), m_stream->codecpar) < 0)
        return AudioFileError::unreadable;
    m_decoder->pkt_timebase = m_stream->time_base;
    m_decoder->thread_count = 1;
    // Noise that stands in for what was not encoded is drawn from the packet, not from what was decoded before (AC-3 only).
    AVDictionary* options = nullptr;
    av_dict_set(&options, "cons_noisegen", "1", 0);
    const int opened = avcodec_open2(m_decoder.get(), codec, &options);
    av_dict_free(&options);
    return opened < 0 ? std::optional(AudioFileError::unreadable) : std::nullopt;
}

/// A film is entered at a picture that stands for itself, which may be seconds early.
bool FfmpegTrack::isBeforeEntry() const
{
    const auto ticks = stampOf(*m_packet);
    return m_seekStream != m_stream && ticks && m_entryTicks && *ticks + m_packet->duration < *m_entryTicks;
}

bool FfmpegTrack::readPacket()
{
    for (int errors = 0; errors < maximalErrorsInARow;) {
        av_packet_unref(m_packet.get());
        const int result = av_read_frame(m_format.get(), m_packet.get());
        if (result == AVERROR_EOF || m_input->hasFailed())
            return false;
        if (result < 0) {
            ++errors;
            continue;
        }
        if (m_packet->stream_index != m_stream->index)
            continue;
        if (!m_sawPacket)
            m_firstTicks = stampOf(*m_packet);
        m_sawPacket = true;
        if (!m_pageOfEntry)
            m_pageOfEntry = m_packet->pos;
        if (m_packet->pos != m_pageOfEntry)
            m_stampsAreGuessed = false;
        if (isBeforeEntry())
            continue;
        return true;
    }
    return false;
}

bool FfmpegTrack::decode()
{
    while (!hasDiskFailed()) {
        const int result = avcodec_receive_frame(m_decoder.get(), m_frame.get());
        if (result == 0) {
            if (m_frame->nb_samples > 0)
                return true;
            continue;
        }
        if (result == AVERROR_EOF || (m_draining && result != AVERROR(EAGAIN)))
            return false;
        if (result != AVERROR(EAGAIN))
            continue;
        if (m_draining)
            return false;
        if (readPacket()) {
            // A packet that cannot be decoded leaves a gap in the time stamps, which is all that has to be known of it.
            [[maybe_unused]] const int sent = avcodec_send_packet(m_decoder.get(), m_packet.get());
        } else if (!hasDiskFailed()) {
            m_draining = true;
            [[maybe_unused]] const int sent = avcodec_send_packet(m_decoder.get(), nullptr);
        }
    }
    return false;
}

FfmpegHandle<AVFrame> FfmpegTrack::takeFrame()
{
    FfmpegHandle<AVFrame> taken(av_frame_alloc());
    REQUIRE(taken != nullptr);
    std::swap(taken, m_frame);
    return taken;
}

std::optional<std::int64_t> FfmpegTrack::frameTicks() const
{
    const std::int64_t ticks = m_frame->pts;
    return ticks != AV_NOPTS_VALUE && !m_stampsAreGuessed ? std::optional(ticks) : std::nullopt;
}

bool FfmpegTrack::seek(std::int64_t ticks)
{
    const std::int64_t target = std::max(ticks, m_firstTicks.value_or(ticks));
    m_input->tryAgain();
    m_draining = false;
    m_pageOfEntry.reset();
    m_stampsAreGuessed = m_isOgg && target != m_firstTicks;
    // Decoders remember a little over a flush (the shape of the last window, whether the encoder's delay was dropped): at the
    // start, where nothing comes before that makes up for it, a new one takes its place.
    if (target != m_firstTicks)
        avcodec_flush_buffers(m_decoder.get());
    else if (openDecoder())
        return false;
    m_entryTicks = target;
    // Searched by its pictures, a film would skip the sound before the first of them.
    const AVStream* by = target == m_firstTicks ? m_stream : m_seekStream;
    const std::int64_t there = av_rescale_q(target, m_stream->time_base, by->time_base);
    return av_seek_frame(m_format.get(), by->index, there, AVSEEK_FLAG_BACKWARD) >= 0;
}

std::optional<std::int64_t> FfmpegTrack::lastPacketTicks()
{
    if (const auto ticks = walkToLastPacket())
        return ticks;
    // A hundred hours: past the end, and far from any overflow.
    const std::int64_t far = av_rescale_q(360'000, { 1, 1 }, m_stream->time_base);
    if (!seek(far))
        return std::nullopt;
    m_entryTicks.reset();
    std::optional<std::int64_t> last;
    while (readPacket())
        if (const auto ticks = stampOf(*m_packet))
            last = std::max(last.value_or(*ticks), *ticks);
    return last;
}

/// Indexes a stream of MPEG audio by its headers alone, if that agrees with what has been read of it so far and no damage is
/// in sight.
std::optional<std::int64_t> FfmpegTrack::walkToLastPacket()
{
    if (std::strcmp(m_format->iformat->name, "mp3") != 0)
        return std::nullopt;
    std::vector<AVIndexEntry> known;
    for (int i = 0; i < std::min(avformat_index_get_entries_count(m_stream), packetsToCompare); ++i)
        known.push_back(*avformat_index_get_entry(m_stream, i));
    if (known.size() < 2)
        return std::nullopt;
    const std::int64_t step = known[1].timestamp - known[0].timestamp;
    const auto bytesAt = [this](std::int64_t offset, std::span<unsigned char> bytes) { return m_input->readAt(offset, bytes); };
    const auto [offsets, reachesTheEnd] = walkMpegFrames(bytesAt, known[0].pos);
    if (!reachesTheEnd || offsets.size() < known.size() || step <= 0)
        return std::nullopt;
    for (std::size_t i = 0; i < known.size(); ++i)
        if (known[i].pos != offsets[i] || known[i].timestamp != known[0].timestamp + static_cast<std::int64_t>(i) * step)
            return std::nullopt;
    const std::size_t stride = offsets.size() / mostIndexEntries + 1;
    for (std::size_t i = 0; i < offsets.size(); i += stride) {
        const std::int64_t ticks = known[0].timestamp + static_cast<std::int64_t>(i) * step;
        if (av_add_index_entry(m_stream, offsets[i], ticks, 0, 0, AVINDEX_KEYFRAME) < 0)
            return std::nullopt;
    }
    return known[0].timestamp + static_cast<std::int64_t>(offsets.size() - 1) * step;
}

std::optional<std::int64_t> FfmpegTrack::claimedTicks() const
{
    if (m_stream->duration > 0)
        return m_stream->duration;
    if (m_format->duration > 0)
        return av_rescale_q(m_format->duration, AVRational{ 1, AV_TIME_BASE }, m_stream->time_base);
    return std::nullopt;
}

bool FfmpegTrack::isBareStream() const { return (m_format->iformat->flags & AVFMT_GENERIC_INDEX) != 0; }

AudioFileError FfmpegTrack::reasonForSilence() const
{
    if (m_input->hasFailed())
        return AudioFileError::unreadable;
    if (m_format->probe_score <= AVPROBE_SCORE_RETRY)
        return AudioFileError::notAudio;
    return m_sawPacket ? AudioFileError::unreadable : AudioFileError::empty;
}

}  // namespace quillet
