// Decodes every frame of a file exactly once and in order, from any frame on: what is missing between blocks comes as silence
// of the same length, what comes twice is left out. Where the disk refuses to be read it goes on a little later. Pieces keep
// the decoder's own sample format; floats that are far out of range are brought into it. It remembers nothing that it gave.
// Threads: confined to one thread at a time, except `readErrors`.
#pragma once

#include "platform/media/AlignedDecoder.h"
#include "platform/media/FloatScale.h"

#include <cstdint>
#include <expected>
#include <optional>

namespace quillet {

/// The frames [position, position + frames) of the file.
struct SoundPiece {
    std::int64_t position;
    std::int64_t frames;
    /// They begin at frame `firstInSound` of it; null: silence. Valid until the decoder's next call.
    const AVFrame* sound;
    std::int64_t firstInSound;
    /// Silence because the disk has refused to be read.
    bool isRefused = false;
};

class GaplessDecoder {
public:
    /// Finds the exact length too, which takes a look at the file's tail, and in a bare stream (MP3) at all of its packets.
    /// The length could be too short where the disk refuses to be read: `unreadable` then.
    [[nodiscard]] static std::expected<GaplessDecoder, AudioFileError> open(const FilePath& path);

    /// At least 1.
    [[nodiscard]] std::int64_t length() const { return m_length; }
    [[nodiscard]] int sampleRate() const { return m_decoder.sampleRate(); }
    [[nodiscard]] int channelCount() const { return m_decoder.channelCount(); }
    [[nodiscard]] SampleLevel level() const { return m_scale.level; }
    [[nodiscard]] SongTags tags() const { return m_decoder.tags(); }
    /// Frames that `enter` decodes before the wanted one.
    [[nodiscard]] std::int64_t prerollFrames() const { return m_decoder.prerollFrames(); }
    /// Whether `enter` has to decode all that comes before.
    [[nodiscard]] bool decodesFromTheStart() const { return m_decoder.decodesFromTheStart(); }
    /// How often the disk has refused to be read since the file was opened. Any thread.
    [[nodiscard]] std::int64_t readErrors() const { return m_decoder.readErrors(); }

    /// Makes `next` answer from frame `position` (0 or more) on. It has to come before the first `next`.
    void enter(std::int64_t position);
    /// The frame at which the next piece begins.
    [[nodiscard]] std::int64_t position() const { return m_position; }
    /// The next piece, of one frame or more; nothing at the end of the file. Silence may be as long as all that is left.
    [[nodiscard]] std::optional<SoundPiece> next();

private:
    GaplessDecoder(AlignedDecoder decoder, std::int64_t length, const FloatScale& scale);
    void decodeBlock();
    void findBlock();
    [[nodiscard]] SoundPiece refusedPiece();
    void skipUndecodable();

    AlignedDecoder m_decoder;
    std::int64_t m_length;
    FloatScale m_scale;
    std::int64_t m_position = 0;
    /// Decoded, and not yet (all) given.
    std::optional<AlignedBlock> m_block;
    /// Frames of silence that the disk's last refusal has cost; 0 once it gives something.
    std::int64_t m_refusedFrames = 0;
    /// Nothing more can be decoded up to the end of the file.
    bool m_silentFromHere = false;
};

}  // namespace quillet
