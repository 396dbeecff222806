#include "platform/media/GaplessDecoder.h"

#include "platform/base/Require.h"
#include "platform/media/LengthProbe.h"

#include <algorithm>
#include <utility>

namespace quillet {
namespace {

/// What is given up at once where the disk refuses to be read; each refusal in a row doubles it up to the longest, since a
/// failing disk may take seconds over every one.
constexpr double shortestRefusedSeconds = 0.05;
constexpr std::int64_t maxRefusedSeconds = 1;

}  // namespace

std::expected<GaplessDecoder, AudioFileError> GaplessDecoder::open(const FilePath& path)
{
    auto decoder = AlignedDecoder::open(path);
    if (!decoder)
        return std::unexpected(decoder.error());
    const std::int64_t length = exactLength(*decoder);
    if (decoder->readErrors() > 0)
        return std::unexpected(AudioFileError::unreadable);
    if (length <= 0)
        return std::unexpected(AudioFileError::empty);
    const FloatScale scale = floatScaleOf(*decoder, length);
    return GaplessDecoder(std::move(*decoder), length, scale);
}

GaplessDecoder::GaplessDecoder(AlignedDecoder decoder, std::int64_t length, const FloatScale& scale)
    : m_decoder(std::move(decoder)),
      m_length(length),
      m_scale(scale)
{
}

void GaplessDecoder::enter(std::int64_t position)
{
    REQUIRE(position >= 0);
    m_decoder.enter(position);
    m_position = position;
    m_block.reset();
    m_refusedFrames = 0;
    m_silentFromHere = false;
}

std::optional<SoundPiece> GaplessDecoder::next()
{
    if (m_position >= m_length)
        return std::nullopt;
    if (m_refusedFrames > 0)
        m_decoder.enter(m_position);
    findBlock();
    if (!m_block && m_decoder.hasDiskFailed())
        return refusedPiece();
    m_refusedFrames = 0;
    SoundPiece piece{ m_position, m_length - m_position, nullptr, 0 };
    if (!m_silentFromHere && m_block->position > m_position) {
        piece.frames = std::min(piece.frames, m_block->position - m_position);
    } else if (!m_silentFromHere) {
        piece.firstInSound = m_position - m_block->position;
        piece.frames = std::min(piece.frames, m_block->frames - piece.firstInSound);
        piece.sound = m_block->sound.get();
    }
    m_position += piece.frames;
    return piece;
}

/// Some silence; the disk is tried again after it.
SoundPiece GaplessDecoder::refusedPiece()
{
    const auto shortest = static_cast<std::int64_t>(shortestRefusedSeconds * sampleRate());
    const std::int64_t longest = std::min(maxRefusedSeconds * sampleRate(), m_length - m_position);
    m_refusedFrames = std::min(std::max(shortest, 2 * m_refusedFrames), longest);
    const SoundPiece piece{ m_position, m_refusedFrames, nullptr, 0, true };
    m_position += piece.frames;
    return piece;
}

void GaplessDecoder::decodeBlock()
{
    m_block = m_decoder.next();
    if (m_scale.factor != 1.0F && m_block && m_block->sound != nullptr)
        scaleSamples(*m_block->sound, m_scale.factor);
}

/// Leaves a block that ends after the present position, if there is one and the disk can be read.
void GaplessDecoder::findBlock()
{
    while (!m_silentFromHere && (!m_block || m_block->position + m_block->frames <= m_position)) {
        decodeBlock();
        if (!m_block && m_decoder.hasDiskFailed())
            return;
        if (!m_block)
            skipUndecodable();
    }
}

/// The decoder gave up before the end: looks for sound further on, in growing steps.
void GaplessDecoder::skipUndecodable()
{
    for (std::int64_t step = sampleRate() / 4; m_position + step < m_length; step *= 2) {
        m_decoder.enter(m_position + step);
        for (decodeBlock(); m_block; decodeBlock())
            if (m_block->position + m_block->frames > m_position)
                return;
        if (m_decoder.hasDiskFailed())
            return;
    }
    m_silentFromHere = true;
}

}  // namespace quillet
