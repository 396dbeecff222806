#include "platform/media/AlignedDecoder.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace quillet {
namespace {

/// Blocks from the start that the scale of the time stamps is made from.
constexpr std::size_t blocksToStudy = 24;
constexpr std::int64_t maxDetourSeconds = 16;

/// Beyond these a header is damaged: it is not believed, because memory is taken by its word.
constexpr int lowestSampleRate = 1000;
constexpr int highestSampleRate = 768'000;
constexpr int mostChannels = 64;

}  // namespace

std::expected<AlignedDecoder, AudioFileError> AlignedDecoder::open(const FilePath& path)
{
    auto track = FfmpegTrack::open(path);
    if (!track)
        return std::unexpected(track.error());
    FfmpegTrack& source = **track;
    if (!source.decode())
        return std::unexpected(source.reasonForSilence());
    const int sampleRate = source.frame().sample_rate;
    const int channelCount = source.frame().ch_layout.nb_channels;
    if (sampleRate < lowestSampleRate || sampleRate > highestSampleRate || channelCount < 1 || channelCount > mostChannels)
        return std::unexpected(AudioFileError::unreadable);

    const EntryRecipe preliminary = entryRecipe(source.codec(), sampleRate, 0);
    const StreamClock clock{ source.timeBase().num, source.timeBase().den, sampleRate, source.isBareStream(),
                             preliminary.blockStep };
    const bool stampsAreSure = clock.isExact() && preliminary.lookahead == 1 && source.frameTicks();
    std::vector<StampedBlock> start{ { source.frameTicks(), source.frame().nb_samples } };
    while (start.size() < (stampsAreSure ? 2 : blocksToStudy) && source.decode())
        start.push_back({ source.frameTicks(), source.frame().nb_samples });
    const EntryRecipe recipe =
        entryRecipe(source.codec(), sampleRate, start[std::min<std::size_t>(start.size() - 1, 1)].frames);
    AlignedDecoder decoder(std::move(*track), sampleRate, channelCount, recipe, StampScale(clock, start));
    decoder.enter(0);
    return decoder;
}

AlignedDecoder::AlignedDecoder(std::unique_ptr<FfmpegTrack> track, int sampleRate, int channelCount, const EntryRecipe& recipe,
                               const StampScale& scale)
    : m_track(std::move(track)),
      m_sampleRate(sampleRate),
      m_channelCount(channelCount),
      m_recipe(recipe),
      m_scale(scale),
      m_aligner(recipe.lookahead, scale.tolerance())
{
}

void AlignedDecoder::enter(std::int64_t position)
{
    m_wanted = position;
    m_earlier = 0;
    jump();
}

void AlignedDecoder::jump()
{
    const std::int64_t target = m_wanted - m_recipe.prerollFrames - m_earlier;
    m_aligner.restart(std::max<std::int64_t>(target, 0));
    m_sounds.clear();
    m_isPlaced = false;
    m_atEnd = false;
    m_entryFailed = !m_track->seek(m_scale.ticks(target));
}

/// Where sound and pictures are not stored side by side, or in the last seconds of a file, containers may land after the
/// target or nowhere.
bool AlignedDecoder::jumpEarlier()
{
    const bool wasAtStart = m_wanted - m_recipe.prerollFrames - m_earlier <= 0;
    if (wasAtStart || m_earlier >= maxDetourSeconds * m_sampleRate)
        return false;
    m_earlier = m_earlier == 0 ? m_sampleRate : 4 * m_earlier;
    jump();
    return true;
}

std::optional<AlignedBlock> AlignedDecoder::next()
{
    for (;;) {
        if (const auto placed = m_aligner.pop()) {
            const bool tooLate = placed->position > std::max<std::int64_t>(m_wanted - m_recipe.prerollFrames / 2, 0);
            if (!m_isPlaced && tooLate && jumpEarlier())
                continue;
            m_isPlaced = true;
            AlignedBlock block{ placed->position, placed->frames, std::move(m_sounds.front()) };
            m_sounds.pop_front();
            return block;
        }
        if (m_atEnd)
            return std::nullopt;
        if (!m_entryFailed && m_track->decode()) {
            takeBlock();
        } else if (m_track->hasDiskFailed()) {
            // Blocks that wait for a vote wait for ever: too few have come to be sure of their places.
            return std::nullopt;
        } else {
            m_atEnd = true;
            m_aligner.finish();
        }
        if (m_atEnd && m_aligner.isGuessing() && !m_isPlaced) [[maybe_unused]]
            const bool again = jumpEarlier();
    }
}

void AlignedDecoder::takeBlock()
{
    const auto ticks = m_track->frameTicks();
    auto sound = m_track->takeFrame();
    std::int64_t frames = sound->nb_samples;
    if (sound->sample_rate != m_sampleRate) {
        // Damage, or a stream that changes its rate midway: keep its time, as silence.
        frames = av_rescale(frames, m_sampleRate, std::max(sound->sample_rate, 1));
        sound.reset();
    }
    m_aligner.push({ ticks ? std::optional(m_scale.position(*ticks)) : std::nullopt, frames });
    m_sounds.push_back(std::move(sound));
}

std::optional<std::int64_t> AlignedDecoder::lastPacketPosition()
{
    const auto ticks = m_track->lastPacketTicks();
    return ticks ? std::optional(m_scale.position(*ticks)) : std::nullopt;
}

std::optional<std::int64_t> AlignedDecoder::claimedLength() const
{
    const auto ticks = m_track->claimedTicks();
    return ticks ? std::optional(av_rescale_q(*ticks, m_track->timeBase(), { 1, m_sampleRate })) : std::nullopt;
}

bool AlignedDecoder::isUncompressedFloat() const
{
    switch (m_track->codec()) {
    case AV_CODEC_ID_PCM_F32LE:
    case AV_CODEC_ID_PCM_F32BE:
    case AV_CODEC_ID_PCM_F64LE:
    case AV_CODEC_ID_PCM_F64BE:
        return true;
    default:
        return false;
    }
}

}  // namespace quillet
