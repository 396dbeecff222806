#include "platform/media/FfmpegAudioFile.h"

#include "platform/base/Require.h"
#include "platform/media/AlignedDecoder.h"
#include "platform/media/LengthProbe.h"
#include "platform/media/PcmWindow.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace quillet {
namespace {

/// A held window is 0.08 s; a window of the waveform's width of a key press is not much more.
constexpr double rememberedSeconds = 0.5;
/// Up to here decoding on is cheaper than a jump.
constexpr double nearbySeconds = 0.25;
/// Frames by which the window grows at most: blocks and gaps may be longer than the window.
constexpr std::int64_t piece = 2048;

std::int64_t framesIn(double seconds, int sampleRate) { return static_cast<std::int64_t>(seconds * sampleRate); }

class FfmpegAudioFile final : public AudioFile {
public:
    FfmpegAudioFile(AlignedDecoder decoder, std::int64_t length)
        : m_decoder(std::move(decoder)),
          m_length(length),
          m_window(framesIn(rememberedSeconds, m_decoder.sampleRate()) + 1)
    {
    }

    [[nodiscard]] std::int64_t length() const override { return m_length; }
    [[nodiscard]] int sampleRate() const override { return m_decoder.sampleRate(); }
    [[nodiscard]] int channelCount() const override { return m_decoder.channelCount(); }
    [[nodiscard]] std::int64_t read(std::int64_t firstFrame, std::span<float> stereo) override;

private:
    void moveTo(std::int64_t position);
    void decodeOn();
    void skipUndecodable();

    AlignedDecoder m_decoder;
    std::int64_t m_length;
    PcmWindow m_window;
    /// Decoded, and not yet (all) in the window.
    std::optional<AlignedBlock> m_block;
    bool m_decoderIsPlaced = false;
    /// Nothing more can be decoded up to the end of the file: it is silent from here.
    bool m_silentFromHere = false;
};

std::int64_t FfmpegAudioFile::read(std::int64_t firstFrame, std::span<float> stereo)
{
    REQUIRE(firstFrame >= 0);
    const std::int64_t wanted = std::min(static_cast<std::int64_t>(stereo.size() / 2), m_length - firstFrame);
    std::int64_t done = 0;
    while (done < wanted) {
        const std::int64_t position = firstFrame + done;
        if (m_window.contains(position)) {
            const auto place = stereo.subspan(2 * static_cast<std::size_t>(done), 2 * static_cast<std::size_t>(wanted - done));
            done += m_window.copy(position, place);
            continue;
        }
        moveTo(position);
        decodeOn();
    }
    return done;
}

void FfmpegAudioFile::moveTo(std::int64_t position)
{
    const std::int64_t nearby = m_decoder.prerollFrames() + framesIn(nearbySeconds, sampleRate());
    if (m_decoderIsPlaced && position >= m_window.end() && position - m_window.end() <= nearby)
        return;
    m_decoder.enter(position);
    m_window.restart(position);
    m_block.reset();
    m_decoderIsPlaced = true;
    m_silentFromHere = false;
}

/// Makes the window's end grow, by a part of a block or a piece of silence.
void FfmpegAudioFile::decodeOn()
{
    const std::int64_t end = m_window.end();
    while (!m_silentFromHere && (!m_block || m_block->position + m_block->frames() <= end)) {
        m_block = m_decoder.next();
        if (!m_block)
            skipUndecodable();
    }
    if (m_silentFromHere) {
        m_window.appendSilence(piece);
    } else if (m_block->position > end) {
        m_window.appendSilence(std::min(m_block->position - end, piece));
    } else {
        const std::int64_t known = end - m_block->position;
        const std::int64_t frames = std::min(m_block->frames() - known, piece);
        m_window.append(
            std::span(m_block->stereo).subspan(2 * static_cast<std::size_t>(known), 2 * static_cast<std::size_t>(frames)));
    }
}

/// The decoder gave up before the end: looks for sound further on, in growing steps.
void FfmpegAudioFile::skipUndecodable()
{
    const std::int64_t end = m_window.end();
    for (std::int64_t step = m_decoder.sampleRate() / 4; end + step < m_length; step *= 2) {
        m_decoder.enter(end + step);
        while ((m_block = m_decoder.next()))
            if (m_block->position + m_block->frames() > end)
                return;
    }
    m_silentFromHere = true;
}

}  // namespace

std::expected<std::unique_ptr<AudioFile>, AudioFileError> FfmpegAudioFileOpener::open(const FilePath& path)
{
    auto decoder = AlignedDecoder::open(path);
    if (!decoder)
        return std::unexpected(decoder.error());
    const std::int64_t length = exactLength(*decoder);
    if (length <= 0)
        return std::unexpected(AudioFileError::empty);
    return std::make_unique<FfmpegAudioFile>(std::move(*decoder), length);
}

}  // namespace quillet
