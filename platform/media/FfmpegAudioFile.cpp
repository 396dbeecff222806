#include "platform/media/FfmpegAudioFile.h"

#include "platform/base/Require.h"
#include "platform/media/GaplessDecoder.h"
#include "platform/media/PcmWindow.h"
#include "platform/media/StereoConverter.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace quillet {
namespace {

/// A held window is 0.08 s; a window of the waveform's width of a key press is not much more.
constexpr double rememberedSeconds = 0.5;
/// Up to here decoding on is cheaper than a jump.
constexpr double nearbySeconds = 0.25;
/// Frames by which the window grows at most: blocks and gaps may be longer than the window.
constexpr std::int64_t growthFrames = 2048;

std::int64_t framesIn(double seconds, int sampleRate) { return static_cast<std::int64_t>(seconds * sampleRate); }

class FfmpegAudioFile final : public AudioFile {
public:
    explicit FfmpegAudioFile(GaplessDecoder decoder)
        : m_decoder(std::move(decoder)),
          m_tags(m_decoder.tags()),
          m_window(framesIn(rememberedSeconds, m_decoder.sampleRate()) + 1)
    {
    }

    [[nodiscard]] std::int64_t length() const override { return m_decoder.length(); }
    [[nodiscard]] int sampleRate() const override { return m_decoder.sampleRate(); }
    [[nodiscard]] int channelCount() const override { return m_decoder.channelCount(); }
    [[nodiscard]] SampleLevel level() const override { return m_decoder.level(); }
    [[nodiscard]] SongTags tags() const override { return m_tags; }
    [[nodiscard]] std::int64_t read(std::int64_t firstFrame, std::span<float> stereo) override;
    [[nodiscard]] std::int64_t readErrors() const override { return m_decoder.readErrors(); }

private:
    void moveTo(std::int64_t position);
    [[nodiscard]] std::int64_t growWindow();

    GaplessDecoder m_decoder;
    const SongTags m_tags;
    StereoConverter m_converter;
    PcmWindow m_window;
    /// Of the piece that was decoded last: the frames up to the decoder's position, or nothing if that is silence.
    std::vector<float> m_stereo;
    bool m_isPlaced = false;
};

std::int64_t FfmpegAudioFile::read(std::int64_t firstFrame, std::span<float> stereo)
{
    REQUIRE(firstFrame >= 0);
    const std::int64_t wanted = std::min(static_cast<std::int64_t>(stereo.size() / 2), length() - firstFrame);
    std::int64_t done = 0;
    while (done < wanted) {
        const std::int64_t position = firstFrame + done;
        if (m_window.contains(position)) {
            const auto place = stereo.subspan(2 * static_cast<std::size_t>(done), 2 * static_cast<std::size_t>(wanted - done));
            done += m_window.copy(position, place);
            continue;
        }
        moveTo(position);
        const std::int64_t refused = std::clamp<std::int64_t>(growWindow() - position, 0, wanted - done);
        std::fill_n(stereo.begin() + 2 * done, 2 * refused, 0.0F);
        done += refused;
    }
    return done;
}

void FfmpegAudioFile::moveTo(std::int64_t position)
{
    const std::int64_t nearby = m_decoder.prerollFrames() + framesIn(nearbySeconds, sampleRate());
    if (m_isPlaced && position >= m_window.end() && position - m_window.end() <= nearby)
        return;
    m_decoder.enter(position);
    m_window.restart(position);
    m_stereo.clear();
    m_isPlaced = true;
}

/// Makes the window's end grow, by a part of a block or some silence. Where the disk refuses to be read it begins after what is
/// missing instead, so that nobody takes that for silence later; that place is returned, else 0.
std::int64_t FfmpegAudioFile::growWindow()
{
    if (m_window.end() == m_decoder.position()) {
        const auto piece = m_decoder.next();
        REQUIRE(piece);
        m_stereo.clear();
        if (piece->isRefused) {
            m_window.restart(m_decoder.position());
            return m_decoder.position();
        }
        if (piece->sound != nullptr) {
            m_converter.convert(*piece->sound, m_stereo);
            const auto begin = m_stereo.begin() + 2 * piece->firstInSound;
            m_stereo.erase(begin + 2 * piece->frames, m_stereo.end());
            m_stereo.erase(m_stereo.begin(), begin);
        }
    }
    const std::int64_t left = m_decoder.position() - m_window.end();
    const std::int64_t frames = std::min(left, growthFrames);
    if (m_stereo.empty())
        m_window.appendSilence(frames);
    else
        m_window.append(
            std::span(m_stereo).last(2 * static_cast<std::size_t>(left)).first(2 * static_cast<std::size_t>(frames)));
    return 0;
}

}  // namespace

std::expected<std::unique_ptr<AudioFile>, AudioFileError> FfmpegAudioFileOpener::open(const FilePath& path)
{
    auto decoder = GaplessDecoder::open(path);
    if (!decoder)
        return std::unexpected(decoder.error());
    return std::make_unique<FfmpegAudioFile>(std::move(*decoder));
}

}  // namespace quillet
