// The audio graph that really sounds: turns what the nodes were told into takes, hands them to the source and render threads,
// and brings ends and positions back to the main thread. The output it plays into is given to it. Threads: main thread; it owns
// the threads that do the work.
#pragma once

#include "platform/audio/AudioOutput.h"
#include "platform/audio/GraphNodes.h"
#include "platform/audio/OutputStage.h"
#include "platform/audio/RenderThread.h"
#include "platform/audio/Renderer.h"
#include "platform/audio/SourceThread.h"
#include "platform/audio/Take.h"
#include "platform/schedule/Scheduler.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace quillet {

class PlaybackGraph final : public AudioGraph {
public:
    PlaybackGraph(AudioOutput& output, Scheduler& scheduler);
    ~PlaybackGraph() override;
    PlaybackGraph(const PlaybackGraph&) = delete;
    PlaybackGraph& operator=(const PlaybackGraph&) = delete;

    [[nodiscard]] std::unique_ptr<PlayerNode> makePlayer() override;
    [[nodiscard]] std::unique_ptr<MixerNode> makeMixer() override;
    TimePitchNode& timePitch() override { return m_timePitch; }
    EqualizerNode& equalizer() override { return m_equalizer; }
    void connect(AudioNode& source, AudioNode& destination) override;
    void disconnectInput(AudioNode& destination) override;
    void start() override;
    [[nodiscard]] bool isRunning() const override { return m_running; }
    void prepare(int sampleRate) override;
    [[nodiscard]] double presentationLatencySeconds() const override;

    /// `changed` is told when the output's device is lost or found, and how it began.
    void onOutputChange(std::function<void(AudioOutput::State)> changed) { m_outputChanged = std::move(changed); }
    /// How often the sound ran dry since the start.
    [[nodiscard]] std::int64_t underruns() const { return m_stage.underruns(); }

protected:
    void beginChange() override { ++m_changeDepth; }
    void commitChange() override;

private:
    friend class GraphPlayer;
    friend class GraphMixer;

    /// A player that reaches the time-pitch unit, and the gains on its way.
    struct Voice {
        GraphPlayer* player = nullptr;
        std::vector<std::shared_ptr<const SharedGain>> gains;
    };

    void playerChanged(const GraphPlayer& player);
    void remove(AudioNode& node);
    [[nodiscard]] std::optional<double> sampleTime(const GraphPlayer& player);
    static GraphInputs& inputsOf(AudioNode& node);
    void collectVoices(AudioNode& node, std::vector<std::shared_ptr<const SharedGain>> gains, std::vector<Voice>& voices) const;

    void commit();
    void startTake(const std::vector<Voice>& voices);
    bool adoptPass(const std::vector<Voice>& voices);
    void endTake();
    void followHint();
    void endingsPassed();
    void settingsChanged();
    void beginRest();

    AudioOutput& m_output;
    Scheduler& m_scheduler;
    std::function<void(AudioOutput::State)> m_outputChanged;
    GraphTimePitch m_timePitch;
    GraphEqualizer m_equalizer;

    int m_changeDepth = 0;
    bool m_dirty = false;
    bool m_running = false;
    int m_sampleRate = 44100;

    std::shared_ptr<Take> m_take;
    std::vector<GraphPlayer*> m_sounding;
    std::int64_t m_epoch = 0;
    /// The pass of the take that the players' schedule stands for.
    std::int64_t m_pass = 0;

    WakeSemaphore m_renderWake;
    OutputStage m_stage{ m_renderWake };
    Renderer m_renderer;
    SourceThread m_source;
    RenderThread m_render;
    ScheduledTask m_endingsWatch, m_restTask;
};

}  // namespace quillet
