// The two ways from the mixed source to what is heard: untouched, or through the stretcher. Each knows which frame of the
// stream comes next and how far it is to any later one. They end with the source's leg and mark nothing.
// Threads: the render thread.
#pragma once

#include "platform/audio/MixedSource.h"
#include "platform/audio/TimeStretcher.h"

#include <cstdint>
#include <span>
#include <vector>

namespace quillet {

class SoundPath {
public:
    virtual ~SoundPath() = default;

    /// Renders frames, all at one slope; fewer than asked before a change of the slope, at the end of the leg, or where the
    /// source has nothing yet.
    virtual std::int64_t render(std::span<float> stereo) = 0;
    /// The stream frame of the next frame, and stream frames per frame.
    [[nodiscard]] virtual double position() const = 0;
    [[nodiscard]] virtual double slope() const = 0;
    /// Frames before the first one at or after stream frame `frame`, at most `limit`.
    [[nodiscard]] virtual std::int64_t framesTo(std::int64_t frame, std::int64_t limit) const = 0;
};

/// Every frame as it is.
class BypassPath final : public SoundPath {
public:
    explicit BypassPath(MixedSource& source)
        : m_source(source)
    {
    }

    void begin(std::int64_t position);

    std::int64_t render(std::span<float> stereo) override;
    [[nodiscard]] double position() const override { return static_cast<double>(m_position); }
    [[nodiscard]] double slope() const override { return 1; }
    [[nodiscard]] std::int64_t framesTo(std::int64_t frame, std::int64_t limit) const override;

private:
    MixedSource& m_source;
    std::int64_t m_position = 0;
    MixedSource::Gains m_gains;
};

/// Stretched and transposed. A gain that moves glides at the stretcher's input, which is heard only when what the stretcher
/// holds has been; so whoever drives it starts another one when `wantsRenewal` says so, at a gain's first move and when it has
/// come to rest.
class StretchedPath final : public SoundPath {
public:
    StretchedPath(MixedSource& source, int sampleRate)
        : m_source(source),
          m_stretcher(sampleRate)
    {
    }

    /// Does ahead of `begin` what takes long in it.
    void prepare(const TimeStretcher::Settings& settings) { m_stretcher.reset(settings); }
    /// `gainsMove`: begun because a gain moves.
    void begin(std::int64_t position, const TimeStretcher::Settings& settings, bool gainsMove);
    void setSettings(const TimeStretcher::Settings& settings) { m_stretcher.setSettings(settings); }
    [[nodiscard]] bool wantsRenewal();

    std::int64_t render(std::span<float> stereo) override;
    [[nodiscard]] double position() const override { return m_stretcher.position(); }
    [[nodiscard]] double slope() const override { return m_stretcher.slope(); }
    [[nodiscard]] std::int64_t framesTo(std::int64_t frame, std::int64_t limit) const override;

private:
    bool feed();

    MixedSource& m_source;
    TimeStretcher m_stretcher;
    MixedSource::Gains m_gains, m_seenGains;
    std::int64_t m_framesSinceMove = 0;
    bool m_holdsOldGains = false;
    std::vector<float> m_block = std::vector<float>(2 * TimeStretcher::maxBlock);
};

}  // namespace quillet
