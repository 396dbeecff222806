// The sound that the demo song is mixed in: left and right at 44.1 kHz. It knows nothing of notes and files.
// Threads: plain data.
#pragma once

#include <cstddef>
#include <vector>

namespace quillet {

struct StereoSound {
    static constexpr int sampleRate = 44'100;

    explicit StereoSound(std::size_t frames)
        : left(frames),
          right(frames)
    {
    }

    [[nodiscard]] std::size_t frames() const { return left.size(); }
    /// Adds to one frame; what lies past the end is dropped.
    void add(std::size_t frame, double toLeft, double toRight)
    {
        if (frame >= frames())
            return;
        left[frame] += static_cast<float>(toLeft);
        right[frame] += static_cast<float>(toRight);
    }

    std::vector<float> left;
    std::vector<float> right;
};

}  // namespace quillet
