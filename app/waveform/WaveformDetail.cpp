#include "app/waveform/WaveformDetail.h"

#include "platform/base/Require.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

namespace quillet {
namespace {

/// Whole blocks of the longest level, and enough for the cost of entering a file not to matter.
constexpr std::int64_t minChunkBlocks = 1024;
constexpr std::int64_t minChunkFrames = 16'384;
/// Blocks that a column is made of, at least.
constexpr double blocksPerColumn = 4;

/// Puts summaries together, each by its length.
class Combination {
public:
    void add(const SoundSummary& part, std::int64_t frames)
    {
        m_lowest = std::min(m_lowest, part.lowest);
        m_highest = std::max(m_highest, part.highest);
        m_squares += static_cast<double>(part.meanSquare) * static_cast<double>(frames);
        m_frames += frames;
    }
    [[nodiscard]] SoundSummary summary() const
    {
        return { m_lowest, m_highest, static_cast<float>(m_squares / static_cast<double>(m_frames)) };
    }

private:
    float m_lowest = std::numeric_limits<float>::infinity();
    float m_highest = -std::numeric_limits<float>::infinity();
    double m_squares = 0;
    std::int64_t m_frames = 0;
};

std::int64_t divideUp(std::int64_t number, std::int64_t by) { return (number + by - 1) / by; }

}  // namespace

// ---- DetailLayout ----

DetailLayout::DetailLayout(std::int64_t length)
    : m_length(length),
      m_blockFrames(static_cast<std::int64_t>(
          std::bit_floor(static_cast<std::uint64_t>(std::max<std::int64_t>(length / blocksWanted, 1))))),
      m_chunkBlocks(std::max(minChunkBlocks, minChunkFrames / m_blockFrames))
{
    REQUIRE(length >= 1);
}

std::int64_t DetailLayout::blockFrames(int level) const
{
    std::int64_t frames = m_blockFrames;
    for (int i = 0; i < level; ++i)
        frames *= levelFactor;
    return frames;
}

std::int64_t DetailLayout::chunkCount() const { return divideUp(m_length, chunkFrames()); }

std::int64_t DetailLayout::chunkStart(std::int64_t chunk) const { return std::min(chunk * chunkFrames(), m_length); }

std::int64_t DetailLayout::framesAt(std::int64_t frame, int level) const
{
    return std::min(blockFrames(level), m_length - frame);
}

// ---- DetailChunk ----

DetailChunk::DetailChunk(const DetailLayout& layout, std::int64_t index, std::vector<SoundSummary> blocks)
    : m_index(index)
{
    const std::int64_t frames = layout.chunkStart(index + 1) - layout.chunkStart(index);
    REQUIRE(static_cast<std::int64_t>(blocks.size()) == divideUp(frames, layout.blockFrames()));
    for (const SoundSummary& block : blocks)
        m_loudest = std::max({ m_loudest, block.highest, -block.lowest });
    m_blocks[0] = std::move(blocks);
    for (int level = 1; level < DetailLayout::levels; ++level) {
        const auto finer = this->blocks(level - 1);
        auto& longer = m_blocks[static_cast<std::size_t>(level)];
        for (std::size_t i = 0; i < finer.size(); i += DetailLayout::levelFactor) {
            Combination combination;
            for (std::size_t part = i; part < std::min(i + DetailLayout::levelFactor, finer.size()); ++part) {
                const std::int64_t start =
                    layout.chunkStart(index) + static_cast<std::int64_t>(part) * layout.blockFrames(level - 1);
                combination.add(finer[part], layout.framesAt(start, level - 1));
            }
            longer.push_back(combination.summary());
        }
    }
}

// ---- WaveformDetail ----

WaveformDetail::WaveformDetail(const DetailLayout& layout)
    : m_layout(layout),
      m_chunks(static_cast<std::size_t>(layout.chunkCount()))
{
}

void WaveformDetail::add(DetailChunk chunk)
{
    m_loudest = std::max(m_loudest, chunk.loudest());
    auto& place = m_chunks.at(static_cast<std::size_t>(chunk.index()));
    place = std::move(chunk);
}

const SoundSummary* WaveformDetail::block(std::int64_t index, int level) const
{
    const std::int64_t perChunk = m_layout.chunkFrames() / m_layout.blockFrames(level);
    const auto& chunk = m_chunks[static_cast<std::size_t>(index / perChunk)];
    return chunk ? &chunk->blocks(level)[static_cast<std::size_t>(index % perChunk)] : nullptr;
}

std::optional<SoundSummary> WaveformDetail::column(double first, double end) const
{
    if (!(first >= 0 && first < static_cast<double>(m_layout.length())))
        return std::nullopt;
    int level = DetailLayout::levels - 1;
    while (level > 0 && static_cast<double>(m_layout.blockFrames(level)) * blocksPerColumn > end - first)
        --level;
    const std::int64_t frames = m_layout.blockFrames(level);
    const std::int64_t count = divideUp(m_layout.length(), frames);
    // The last block is short.
    const auto blockAt = [&](double frame) {
        const bool isEnd = frame >= static_cast<double>(m_layout.length());
        return isEnd ? count : static_cast<std::int64_t>(std::round(frame / static_cast<double>(frames)));
    };
    std::int64_t from = blockAt(first);
    std::int64_t to = blockAt(end);
    if (from >= to) {
        from = static_cast<std::int64_t>(first) / frames;
        to = from + 1;
    }
    Combination combination;
    for (std::int64_t i = from; i < to; ++i) {
        const SoundSummary* part = block(i, level);
        if (part == nullptr)
            return std::nullopt;
        combination.add(*part, m_layout.framesAt(i * frames, level));
    }
    return combination.summary();
}

}  // namespace quillet
