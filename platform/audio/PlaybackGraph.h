// The audio graph that really sounds: turns what the nodes were told into runs, hands them to the source and render threads,
// goes on with another run where an edit cannot be taken up by the present one, and brings ends and positions back to the main
// thread. The output it plays into is given to it; it runs at that output's rate, and brings files of other rates to it.
// Threads: main thread; it owns the threads that do the work.
#pragma once

#include "platform/audio/AudioOutput.h"
#include "platform/audio/GraphNodes.h"
#include "platform/audio/OutputStage.h"
#include "platform/audio/PositionMap.h"
#include "platform/audio/RenderThread.h"
#include "platform/audio/Renderer.h"
#include "platform/audio/Run.h"
#include "platform/audio/SourceThread.h"
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
    void setChannels(ChannelMode channels) override;
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
    /// Frames handed over since the sound came to its end; 0 while it goes on.
    [[nodiscard]] std::int64_t framesSinceEnd();

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

    void playerChanged();
    void remove(AudioNode& node);
    [[nodiscard]] std::optional<double> sampleTime(const GraphPlayer& player);
    [[nodiscard]] std::int64_t passesEnded(const GraphPlayer& player);
    static GraphInputs& inputsOf(AudioNode& node);
    void collectVoices(AudioNode& node, std::vector<std::shared_ptr<const SharedGain>> gains, std::vector<Voice>& voices) const;
    [[nodiscard]] std::vector<Voice> voices();

    void commit();
    bool adoptPass(const std::vector<Voice>& voices);
    void startWhenPossible();
    void startRun(const std::vector<Voice>& voices);
    void followPlan();
    [[nodiscard]] bool canMoveEnd(const GraphPlayer& player, std::int64_t count);
    void goOnInAnotherRun(Pass present, RunPlan plan);
    void play(std::shared_ptr<Run> run);
    void endRun();
    [[nodiscard]] int rateFor(int fileRate) const;
    [[nodiscard]] std::vector<RunSource> sourcesOf(const std::vector<Voice>& voices) const;
    [[nodiscard]] FrameRange framesOf(FrameRange segment) const;
    [[nodiscard]] RunPlan planOf(const PassPlan& plan);
    void newsArrived();
    void outputChanged(AudioOutput::State state);
    void settingsChanged();
    void beginRest();
    void endRest();
    void takePlaces();

    AudioOutput& m_output;
    Scheduler& m_scheduler;
    std::function<void(AudioOutput::State)> m_outputChanged;
    GraphTimePitch m_timePitch;
    GraphEqualizer m_equalizer;
    ChannelMode m_channels = ChannelMode::stereo;

    int m_changeDepth = 0;
    bool m_dirty = false;
    bool m_running = false;
    int m_sampleRate = 44100;
    std::optional<AudioOutput::State> m_outputState;

    // What sounds: the run, the players it stands for, and where the frames of the first player's file are in it.
    std::shared_ptr<Run> m_run;
    std::vector<GraphPlayer*> m_sounding;
    std::vector<std::shared_ptr<AudioFile>> m_files;
    double m_framesPerFileFrame = 1;
    /// Of the longest file, in frames of the graph.
    std::int64_t m_length = 0;
    std::int64_t m_generation = 0;
    /// The pass of the run that the players' schedule stands for, and passes of runs before it that count as its own.
    std::int64_t m_pass = 0;
    std::int64_t m_passesBefore = 0;
    /// Some pass that follows has a speed or a pitch of its own.
    bool m_plansOwnSettings = false;
    /// Which frame of the stream is at which place of the output ring.
    PositionMap m_map;
    std::int64_t m_mapGeneration = 0;
    /// A start waits, until the one before has been entered or the output's rate is known.
    bool m_startWaits = false;
    bool m_resting = false;
    ScheduledTask m_startTask;

    WakeSemaphore m_renderWake;
    OutputStage m_stage{ m_renderWake };
    Renderer m_renderer;
    SourceThread m_source;
    RenderThread m_render;
    ScheduledTask m_newsWatch, m_restTask;
};

}  // namespace quillet
