// Gives every decoded block its place on the file's timeline. Blocks follow each other without a gap as long as the time stamps
// of some block in sight agree; where none does (after a jump, or after damage) the place is found by a vote among the blocks
// in sight. So single wrong stamps do no harm, and a decode from the start and one that was entered after damage agree. It
// knows where blocks are, not how they sound, and makes no silence: gaps and overlaps are its reader's business.
// Threads: confined to one thread at a time.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>

namespace quillet {

/// A block whose stamp says it starts at frame `stamp`, and that holds `frames` frames.
struct StampedPosition {
    std::optional<std::int64_t> stamp;
    std::int64_t frames;
};

/// Where the first of these consecutive blocks starts in the opinion of most; stamps that differ by up to `tolerance` frames
/// agree (the middle one of those that agree is the answer). Nothing if none is stamped.
std::optional<std::int64_t> votedStart(std::span<const StampedPosition> blocks, std::int64_t tolerance);

/// The frames [position, position + frames) of the file.
struct PlacedBlock {
    std::int64_t position;
    std::int64_t frames;
};

class TimelineAligner {
public:
    /// `lookahead`: stamped blocks to compare, at least 1; `tolerance`: error of a single stamp in frames.
    TimelineAligner(int lookahead, std::int64_t tolerance);

    /// Forgets everything. The next block is placed by the stamps; at `guess` if there are none.
    void restart(std::int64_t guess);

    void push(const StampedPosition& block) { m_pending.push_back(block); }
    /// No more blocks will come: judge by those that are here.
    void finish() { m_finished = true; }

    /// Whether nothing is known of where the blocks that wait are.
    [[nodiscard]] bool isGuessing() const;

    /// The place of the next block, in the order in which they came; nothing while more blocks are needed to tell, or none is
    /// left.
    [[nodiscard]] std::optional<PlacedBlock> pop();

private:
    [[nodiscard]] bool supports(std::int64_t start) const;
    [[nodiscard]] bool canVote() const;

    std::size_t m_lookahead;
    std::int64_t m_tolerance;
    std::deque<StampedPosition> m_pending;
    std::int64_t m_next = 0;
    bool m_nextIsKnown = false;
    bool m_finished = false;
};

}  // namespace quillet
