// The stereo sound that was decoded last: one unbroken range of frames of a file, from which what was just read can be read
// again by a copy. Its size is fixed when it is made; what is added pushes the oldest out.
// Threads: confined to one thread at a time.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace quillet {

class PcmWindow {
public:
    /// `capacity`: frames, at least 1.
    explicit PcmWindow(std::int64_t capacity);

    /// Empties the window; what is added next starts at `position`.
    void restart(std::int64_t position);
    [[nodiscard]] std::int64_t begin() const { return m_begin; }
    [[nodiscard]] std::int64_t end() const { return m_end; }
    [[nodiscard]] bool contains(std::int64_t position) const { return position >= m_begin && position < m_end; }

    /// Adds frames at the end.
    void append(std::span<const float> stereo);
    void appendSilence(std::int64_t frames);
    /// Copies from `position`, which the window contains, as many frames as it has and `stereo` takes; returns how many.
    std::int64_t copy(std::int64_t position, std::span<float> stereo) const;

private:
    /// Where frame `position` is kept, and how many frames follow it in one piece.
    [[nodiscard]] std::int64_t slot(std::int64_t position) const { return position % m_capacity; }
    void advance(std::int64_t frames);

    std::int64_t m_capacity;
    std::vector<float> m_frames;
    std::int64_t m_begin = 0;
    std::int64_t m_end = 0;
};

}  // namespace quillet
