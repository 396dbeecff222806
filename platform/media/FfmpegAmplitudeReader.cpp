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

private:
    [[nodiscard]] double sumOf(const AVFrame& sound, std::int64_t first, std::int64_t frames);

    GaplessDecoder m_decoder;
    StereoConverter m_converter;
    std::vector<float> m_stereo;
    /// Decoded, and summed up to `m_position`.
    std::optional<SoundPiece> m_piece;
    std::int64_t m_position = 0;
};

void FfmpegAmplitudeReader::enter(std::int64_t frame)
{
    m_decoder.enter(frame);
    m_piece.reset();
    m_position = frame;
}

double FfmpegAmplitudeReader::sum(std::int64_t frames)
{
    REQUIRE(frames >= 1 && m_position + frames <= length());
    const std::int64_t end = m_position + frames;
    double total = 0;
    while (m_position < end) {
        if (m_decoder.position() == m_position)
            m_piece = m_decoder.next();
        const std::int64_t count = std::min(end, m_decoder.position()) - m_position;
        if (m_piece->sound != nullptr)
            total += sumOf(*m_piece->sound, m_piece->firstInSound + (m_position - m_piece->position), count);
        m_position += count;
    }
    return total;
}

double FfmpegAmplitudeReader::sumOf(const AVFrame& sound, std::int64_t first, std::int64_t frames)
{
    if (const auto sum = amplitudeSum(sound, first, frames))
        return *sum;
    m_converter.convert(sound, m_stereo);
    return amplitudeSum(std::span(m_stereo).subspan(2 * static_cast<std::size_t>(first), 2 * static_cast<std::size_t>(frames)));
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
