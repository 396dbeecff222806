// The take as one stereo stream: the sum of its files, each through its mixers' gains, addressed by frames since the take's start.
// It remembers the last half second, so that the renderer can look back when it changes over between stretching and not.
// Threads: the render thread.
#pragma once

#include "platform/audio/Take.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace quillet {

class MixedSource {
public:
    /// `consumed` is called when frames were taken out of a take's ring.
    explicit MixedSource(std::function<void()> consumed);

    /// Starts with the first frame of `take`, which may be null.
    void begin(std::shared_ptr<Take> take);
    [[nodiscard]] const std::shared_ptr<Take>& take() const { return m_take; }

    /// Has frames up to `frame` ready if the source delivered them; returns the position behind the last frame that is.
    std::int64_t fetch(std::int64_t frame);
    /// Copies frames from `first` on: silence before the take and behind its end, else what was fetched within the last half second.
    void copy(std::int64_t first, std::span<float> stereo) const;

    /// Where the take ends, once that is decided; at least 5 ms ahead of the last frame delivered.
    [[nodiscard]] std::optional<std::int64_t> end() const { return m_end; }
    /// The next end of a pass behind which the take goes on; to be dropped by `passNextEnd` when the renderer has gone by.
    [[nodiscard]] std::optional<PassEnd> nextPassEnd() const;
    void passNextEnd();
    /// Ends the take at the next end of a pass, if the take has been closed: before the joint, but not before `earliest`.
    void obeyClosing(std::int64_t earliest);

private:
    void takeEnds();
    void mix(std::span<const float> wide, std::int64_t count);
    float targetGain(std::size_t source) const;

    std::function<void()> m_consumed;
    std::shared_ptr<Take> m_take;
    std::vector<float> m_history;
    std::int64_t m_mask = 0;
    std::int64_t m_mixed = 0;
    std::vector<float> m_wide;
    std::vector<float> m_gains;
    std::vector<PassEnd> m_passEnds;
    std::optional<std::int64_t> m_end;
};

}  // namespace quillet
