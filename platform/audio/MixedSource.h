// The present run as one stereo stream: the sum of its files, each through its mixers' gains, addressed by frames of the run's
// stream. It remembers the files' last half second apart from each other, so that the renderer can look back when it changes
// over from one way of rendering to another. What lies outside the present leg (the stretch between two silences) is silent.
// Threads: the render thread, but for `setChannels`.
#pragma once

#include "platform/audio/ChannelMode.h"
#include "platform/audio/Run.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace quillet {

class MixedSource {
public:
    /// `consumed` is called when frames were taken out of a run's ring.
    explicit MixedSource(std::function<void()> consumed);

    /// Main thread.
    void setChannels(ChannelMode channels) { m_channels.store(channels, std::memory_order_relaxed); }

    /// Starts with the first frame of `run`, which may be null.
    void begin(std::shared_ptr<Run> run);
    [[nodiscard]] const std::shared_ptr<Run>& run() const { return m_run; }

    /// Has frames up to `frame` ready if the source delivered them; returns the position after the last frame that is.
    std::int64_t fetch(std::int64_t frame);
    /// One gain for each file, and then those of the channels: from the left to the left, from the right to the left, from the
    /// left to the right, from the right to the right.
    using Gains = std::vector<float>;
    /// Where the mixers and the channels are now.
    [[nodiscard]] const Gains& gains() const;
    /// The sum of the files from frame `first` on: silence outside the leg, else what was fetched within the last half second.
    /// `gains` move on to where the mixers are now over a few milliseconds.
    void mix(std::int64_t first, std::span<float> stereo, Gains& gains) const;

    /// The end of the leg, once it is known: at least 2 ms ahead of the last frame delivered, if the pass is that long.
    [[nodiscard]] std::optional<std::int64_t> legEnd() const { return m_legEnd; }
    /// The next end of a pass; to be dropped by `passNextEnd` when the renderer has gone by. After the end of a leg that is not
    /// the run's, a new leg begins there.
    [[nodiscard]] const PassEnd* nextPassEnd() const { return m_passEnds.empty() ? nullptr : &m_passEnds.front(); }
    void passNextEnd();

private:
    void takeEnds();
    void findLegEnd();
    void mixSteady(std::int64_t first, std::span<float> stereo, const Gains& gains) const;
    [[nodiscard]] bool knows(std::int64_t frame) const;
    [[nodiscard]] const float* frameAt(std::int64_t frame) const;

    std::function<void()> m_consumed;
    std::shared_ptr<Run> m_run;
    std::vector<float> m_history;
    std::int64_t m_mask = 0;
    /// The position after the last frame fetched.
    std::int64_t m_fetched = 0;
    std::size_t m_width = 0;
    mutable Gains m_targets;
    std::atomic<ChannelMode> m_channels{ ChannelMode::stereo };
    std::deque<PassEnd> m_passEnds;
    std::int64_t m_legStart = 0;
    std::optional<std::int64_t> m_legEnd;
};

}  // namespace quillet
