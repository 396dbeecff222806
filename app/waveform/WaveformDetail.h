// What a song looks like closely: its sound in short blocks, each with its extremes and its mean square, and the same in longer
// blocks, so that a column of pixels reads only a few of them whatever the zoom. It comes in chunks, in any order; what is not
// there yet is not guessed. It decodes nothing and draws nothing.
// Threads: values, no shared state.
#pragma once

#include "platform/media/AmplitudeReader.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quillet {

/// A part of a song, in fractions of its length.
struct SongPart {
    double first = 0;
    double end = 1;
};

/// How a song of `length` frames (at least 1) is cut: into chunks of blocks.
class DetailLayout {
public:
    /// A song has at least as many blocks, and less than twice as many, as far as it has the frames: enough for twice the
    /// narrowest columns there are.
    static constexpr std::int64_t blocksWanted = 384'000;
    /// From one level to the next, longer ones.
    static constexpr std::int64_t levelFactor = 4;
    static constexpr int levels = 4;

    explicit DetailLayout(std::int64_t length);

    [[nodiscard]] std::int64_t length() const { return m_length; }
    /// Frames of a block, a power of two.
    [[nodiscard]] std::int64_t blockFrames(int level = 0) const;
    /// Frames of a chunk, whole blocks of every level; the last chunk ends with the song, as does its last block of each level.
    [[nodiscard]] std::int64_t chunkFrames() const { return m_chunkBlocks * m_blockFrames; }
    [[nodiscard]] std::int64_t chunkCount() const;
    /// The first frame of `chunk`, which may be the one after the last.
    [[nodiscard]] std::int64_t chunkStart(std::int64_t chunk) const;
    /// Frames of the block of `level` that begins at `frame`.
    [[nodiscard]] std::int64_t framesAt(std::int64_t frame, int level) const;

    bool operator==(const DetailLayout&) const = default;

private:
    std::int64_t m_length;
    std::int64_t m_blockFrames;
    std::int64_t m_chunkBlocks;
};

/// A chunk's blocks of all levels.
class DetailChunk {
public:
    /// `blocks` are those of the shortest level, all of them.
    DetailChunk(const DetailLayout& layout, std::int64_t index, std::vector<SoundSummary> blocks);

    [[nodiscard]] std::int64_t index() const { return m_index; }
    /// The largest magnitude of a sample.
    [[nodiscard]] float loudest() const { return m_loudest; }
    [[nodiscard]] std::span<const SoundSummary> blocks(int level) const { return m_blocks[static_cast<std::size_t>(level)]; }

private:
    std::int64_t m_index;
    float m_loudest = 0;
    std::array<std::vector<SoundSummary>, DetailLayout::levels> m_blocks;
};

class WaveformDetail {
public:
    explicit WaveformDetail(const DetailLayout& layout);

    [[nodiscard]] const DetailLayout& layout() const { return m_layout; }
    void add(DetailChunk chunk);
    /// The largest magnitude of a sample in what is there.
    [[nodiscard]] float loudest() const { return m_loudest; }

    /// What frames [first, end) look like, to within a fraction of their number (an eighth at either end, as far as there are
    /// blocks that short); neighbouring columns share no block and leave none out. Of less than a block it is the block.
    /// Nothing where it is not there yet, or not in the song.
    [[nodiscard]] std::optional<SoundSummary> column(double first, double end) const;

private:
    [[nodiscard]] const SoundSummary* block(std::int64_t index, int level) const;

    DetailLayout m_layout;
    std::vector<std::optional<DetailChunk>> m_chunks;
    float m_loudest = 0;
};

}  // namespace quillet
