// The take as one stereo stream: the sum of its files, each through its mixers' gains, addressed by frames since the take's
// start. It remembers the files' last half second apart from each other, so that the renderer can look back when it changes
// over between stretching and not, or when a gain has changed and must not wait for what the stretcher has swallowed already.
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
    /// One gain for each file.
    using Gains = std::vector<float>;
    /// Where the mixers are now.
    void readGains(Gains& gains) const;
    /// The sum of the files from frame `first` on: silence before the take and behind its end, else what was fetched within the
    /// last half second. `gains` move on to where the mixers are now over a few milliseconds.
    void mixGliding(std::int64_t first, std::span<float> stereo, Gains& gains) const;
    /// The same with gains that stay.
    void mixSteady(std::int64_t first, std::span<float> stereo, const Gains& gains) const;

    /// Where the take ends, once that is decided; at least 5 ms ahead of the last frame delivered.
    [[nodiscard]] std::optional<std::int64_t> end() const { return m_end; }
    /// How many frames before the end already fade over into a pass that was called off.
    [[nodiscard]] std::int64_t jointAtEnd() const { return m_jointAtEnd; }
    /// The next end of a pass behind which the take goes on; to be dropped by `passNextEnd` when the renderer has gone by.
    [[nodiscard]] std::optional<PassEnd> nextPassEnd() const;
    void passNextEnd();
    /// Ends the take at the next end of a pass, if the take has been closed: before the joint, but not before `earliest`.
    void obeyClosing(std::int64_t earliest);

private:
    void takeEnds();
    [[nodiscard]] bool knows(std::int64_t frame) const;
    [[nodiscard]] const float* frameAt(std::int64_t frame) const;

    std::function<void()> m_consumed;
    std::shared_ptr<Take> m_take;
    std::vector<float> m_history;
    std::int64_t m_mask = 0;
    std::int64_t m_fetched = 0;
    std::size_t m_width = 0;
    mutable Gains m_targets;
    std::vector<PassEnd> m_passEnds;
    std::optional<std::int64_t> m_end;
    std::int64_t m_jointAtEnd = 0;
};

}  // namespace quillet
