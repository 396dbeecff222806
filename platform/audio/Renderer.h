// Turns the present run into what the device gets, in small steps that keep the output ring filled just far enough: decides
// which way the sound takes (untouched or stretched) and crosses over between them, lets silences pass, and marks where runs
// and passes begin and end and which frame is heard where. It does not decode, and it never runs in the device callback: one of
// the stretcher's bursts is longer than a device period.
// Threads: the setters on the main thread, the rest on the render thread.
#pragma once

#include "platform/audio/FillPolicy.h"
#include "platform/audio/MixedSource.h"
#include "platform/audio/OutputStage.h"
#include "platform/audio/SoundPath.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace quillet {

class Renderer {
public:
    Renderer(OutputStage& output, std::function<void()> sourceConsumed);

    // ---- Main thread ----

    void setRate(double rate) { m_rate.store(rate, std::memory_order_relaxed); }
    void setPitch(double pitchCents) { m_pitchCents.store(pitchCents, std::memory_order_relaxed); }
    void setKeepsFormants(bool keeps) { m_keepsFormants.store(keeps, std::memory_order_relaxed); }

    /// The run's passes up to this one follow the settings, whatever they had of their own.
    void release(std::int64_t generation, std::int64_t pass);
    void setChannels(ChannelMode channels) { m_source.setChannels(channels); }

    // ---- Render thread ----

    void setPriority(ThreadPriority priority) { m_fill.setPriority(priority); }
    /// Renders `run` as soon as its source has delivered, and what came before until then; null ends the sound.
    void begin(std::shared_ptr<Run> run);
    /// Renders a little; false when there is nothing to do before the next wake.
    bool step();
    /// Gets a stretcher for this sample rate ready for the next start; to be called when there is nothing else to do.
    void prepareSpare(int sampleRate);

private:
    /// The path that is left while another one takes over.
    struct Blend {
        SoundPath* from = nullptr;
        std::int64_t at = 0;
        std::int64_t frames = 0;
    };
    /// The stretch between two silences that is rendered.
    struct Leg {
        bool isBegun = false;
        /// It begins the run: its first frames are shaped when the run is entered.
        bool isFirst = true;
        std::int64_t startFrame = 0;
        std::int64_t rendered = 0;
        /// Silence before it.
        std::int64_t pauseLeft = 0;
    };

    [[nodiscard]] TimeStretcher::Settings settings() const { return settingsOf(m_pass, m_own); }
    [[nodiscard]] TimeStretcher::Settings settingsOf(std::int64_t pass, const PassSettings& own) const;
    void beginPass(PassSettings own);
    [[nodiscard]] std::int64_t frames(double seconds) const;
    [[nodiscard]] std::int64_t room();
    bool beginNext();
    void beginRun(std::shared_ptr<Run> run);
    void beginLeg();
    void followSettings();
    [[nodiscard]] StretchedPath& startStretched(std::int64_t position, bool gainsMove);
    void crossTo(SoundPath& path, double seconds);
    [[nodiscard]] std::int64_t untilSettingsChange(std::int64_t limit) const;
    std::int64_t renderPause(std::int64_t room);
    std::int64_t renderBlend(std::span<float> stereo);
    void shapeEdges(std::span<float> stereo, std::int64_t framesToEnd);
    void emit(std::span<const float> stereo, double position, double slope);
    bool endLeg();
    bool pushMark(OutputMark::Kind kind, std::int64_t outputFrame);
    void notePlace(std::int64_t outputFrame, double position, double slope);

    OutputStage& m_output;
    MixedSource m_source;
    std::atomic<double> m_rate{ 1 };
    std::atomic<double> m_pitchCents{ 0 };
    std::atomic<bool> m_keepsFormants{ false };
    /// A run's generation and, in the lower half, the number of one of its passes.
    std::atomic<std::uint64_t> m_released{ 0 };
    FillPolicy m_fill;

    // The two paths, a spare for the stretched one, and what of them sounds.
    BypassPath m_bypass{ m_source };
    std::unique_ptr<StretchedPath> m_stretched, m_spare;
    int m_stretchedRate = 0;
    SoundPath* m_path = &m_bypass;
    Blend m_blend;
    /// The next step begins at a joint at which speed or pitch change.
    bool m_settingsJoint = false;

    // The run that waits for its source, and where the one that is rendered begins.
    std::shared_ptr<Run> m_next;
    bool m_ended = true;
    std::int64_t m_beginOutput = 0;
    Leg m_leg;
    /// The pass of the run that is rendered, and what it has of its own.
    std::int64_t m_pass = 0;
    PassSettings m_own;
    std::optional<MapPiece> m_noted;
    std::vector<float> m_block, m_other;
};

}  // namespace quillet
