#include "platform/media/FfmpegAmplitudeReader.h"

#include "platform/base/Require.h"
#include "platform/media/AmplitudeSum.h"
#include "platform/media/GaplessDecoder.h"
#include "platform/media/StereoConverter.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

namespace quillet {
namespace {

class FfmpegAmplitudeReader final : public AmplitudeReader {
public:
    explicit FfmpegAmplitudeReader(GaplessDecoder decoder)
        : m_decoder(std::move(decoder))
    {
    }

    [[nodiscard]] std::int64_t length() const override { return m_decoder.length(); }
    [[nodiscard]] bool entersAnywhere() const override { return !m_decoder.decodesFromTheStart(); }
    void enter(std::int64_t frame) override;
    [[nodiscard]] double sum(std::int64_t frames) override;
    [[nodiscard]] SoundSummary summary(std::int64_t frames) override;

private:
    template <typename Use> void goOn(std::int64_t frames, const Use& use);
    [[nodiscard]] std::span<const float> stereo(const AVFrame& sound, std::int64_t first, std::int64_t frames);

    GaplessDecoder m_decoder;
    StereoConverter m_converter;
    /// The sound of `m_piece` once it has been converted, else empty.
    std::vector<float> m_stereo;
    /// Decoded, and used up to `m_position`.
    std::optional<SoundPiece> m_piece;
    std::int64_t m_position = 0;
};

void FfmpegAmplitudeReader::enter(std::int64_t frame)
{
    m_decoder.enter(frame);
    m_piece.reset();
    m_stereo.clear();
    m_position = frame;
}

/// Calls `use` with the sound of each piece (null for silence), and which of its frames are meant.
template <typename Use> void FfmpegAmplitudeReader::goOn(std::int64_t frames, const Use& use)
{
    REQUIRE(frames >= 1 && m_position + frames <= length());
    const std::int64_t end = m_position + frames;
    while (m_position < end) {
        if (m_decoder.position() == m_position) {
            m_piece = m_decoder.next();
            m_stereo.clear();
        }
        const std::int64_t count = std::min(end, m_decoder.position()) - m_position;
        use(m_piece->sound, m_piece->firstInSound + (m_position - m_piece->position), count);
        m_position += count;
    }
}

double FfmpegAmplitudeReader::sum(std::int64_t frames)
{
    double total = 0;
    goOn(frames, [&](const AVFrame* sound, std::int64_t first, std::int64_t count) {
        if (sound == nullptr)
            return;
        const auto sum = amplitudeSum(*sound, first, count);
        total += sum ? *sum : amplitudeSum(stereo(*sound, first, count));
    });
    return total;
}

SoundSummary FfmpegAmplitudeReader::summary(std::int64_t frames)
{
    SampleTally tally;
    goOn(frames, [&](const AVFrame* sound, std::int64_t first, std::int64_t count) {
        if (sound == nullptr)
            tally.addSilence(m_decoder.channelCount() == 1 ? count : 2 * count);
        else if (!tally.add(*sound, first, count))
            tally.add(stereo(*sound, first, count));
    });
    return tally.summary();
}

std::span<const float> FfmpegAmplitudeReader::stereo(const AVFrame& sound, std::int64_t first, std::int64_t frames)
{
    if (m_stereo.empty())
        m_converter.convert(sound, m_stereo);
    return std::span(m_stereo).subspan(2 * static_cast<std::size_t>(first), 2 * static_cast<std::size_t>(frames));
}

}  // namespace

std::expected<std::unique_ptr<AmplitudeReader>, AudioFileError> FfmpegAmplitudeReaderOpener::open(const FilePath& path)
{
    auto decoder = GaplessDecoder::open(path);
    if (!decoder)
        return std::unexpected(decoder.error());
    return std::make_unique<FfmpegAmplitudeReader>(std::move(*decoder));
}

}  // namespace quillet
