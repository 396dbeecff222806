// Decodes a file into blocks with their exact places on its timeline, from any frame on: it enters ahead of the wanted frame by
// what the encoding needs, and lets what comes out be checked against the time stamps. Blocks keep the decoder's own sample
// format. It makes no silence for gaps and does not remember what it gave.
// Threads: confined to one thread at a time, except `readErrors`.
#pragma once

#include "platform/media/EntryRecipe.h"
#include "platform/media/FfmpegTrack.h"
#include "platform/media/StampScale.h"
#include "platform/media/TimelineAligner.h"

#include <cstdint>
#include <deque>
#include <expected>
#include <memory>
#include <optional>

namespace quillet {

struct AlignedBlock {
    std::int64_t position;
    std::int64_t frames;
    /// In any sample format, with the file's sample rate; null where the stream has changed its rate: silence.
    FfmpegHandle<AVFrame> sound;
};

class AlignedDecoder {
public:
    [[nodiscard]] static std::expected<AlignedDecoder, AudioFileError> open(const FilePath& path);

    /// Makes `next` answer from at or before frame `position` (0 or more) on. Blocks before `position` may come first, and
    /// their sound may differ from a decode from the start; the block of `position` and those after it do not.
    void enter(std::int64_t position);
    /// The next block; nothing at the end of what can be decoded from here, and from when the disk refuses to be read until
    /// the next `enter`. Positions grow, except where stamps run backwards.
    [[nodiscard]] std::optional<AlignedBlock> next();
    /// Whether that was the reason why `next` gave nothing.
    [[nodiscard]] bool hasDiskFailed() const { return m_track->hasDiskFailed(); }
    /// How often the disk has refused since the file was opened. Any thread.
    [[nodiscard]] std::int64_t readErrors() const { return m_track->readErrors(); }

    [[nodiscard]] int sampleRate() const { return m_sampleRate; }
    [[nodiscard]] int channelCount() const { return m_channelCount; }
    [[nodiscard]] SongTags tags() const { return m_track->tags(); }
    /// Whether the file holds floating-point numbers as they are.
    [[nodiscard]] bool isUncompressedFloat() const;
    /// Frames that `enter` decodes before the wanted one.
    [[nodiscard]] std::int64_t prerollFrames() const { return m_recipe.prerollFrames; }
    /// Whether `enter` has to decode all that comes before.
    [[nodiscard]] bool decodesFromTheStart() const { return m_recipe.prerollFrames == EntryRecipe::everythingBefore; }

    /// The start of the last packet, if the file tells without being decoded. Indexes a bare stream. `enter` has to follow.
    [[nodiscard]] std::optional<std::int64_t> lastPacketPosition();
    /// The length by the file's header, if it has one. Often a little off.
    [[nodiscard]] std::optional<std::int64_t> claimedLength() const;

private:
    AlignedDecoder(std::unique_ptr<FfmpegTrack> track, int sampleRate, int channelCount, const EntryRecipe& recipe,
                   const StampScale& scale);
    void jump();
    [[nodiscard]] bool jumpEarlier();
    void takeBlock();

    std::unique_ptr<FfmpegTrack> m_track;
    int m_sampleRate;
    int m_channelCount;
    EntryRecipe m_recipe;
    StampScale m_scale;
    TimelineAligner m_aligner;
    /// The sound of the blocks that the aligner has, in their order.
    std::deque<FfmpegHandle<AVFrame>> m_sounds;
    std::int64_t m_wanted = 0;
    /// How much further ahead of the wanted frame than usual the file had to be entered.
    std::int64_t m_earlier = 0;
    bool m_isPlaced = false;
    bool m_entryFailed = false;
    bool m_atEnd = false;
};

}  // namespace quillet
