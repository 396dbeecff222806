// The nodes of the playing graph. They keep what was set and tell the graph; the sound itself is made elsewhere.
// Threads: main thread.
#pragma once

#include "platform/audio/AudioGraph.h"
#include "platform/audio/Run.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace quillet {

class PlaybackGraph;

/// Anything that has inputs: remembers which nodes lead into it.
struct GraphInputs {
    std::vector<AudioNode*> nodes;
};

class GraphPlayer final : public PlayerNode {
public:
    explicit GraphPlayer(PlaybackGraph& graph)
        : m_graph(graph)
    {
    }
    ~GraphPlayer() override;
    GraphPlayer(const GraphPlayer&) = delete;
    GraphPlayer& operator=(const GraphPlayer&) = delete;

    void scheduleSegment(std::shared_ptr<AudioFile> file, FrameRange segment, CompletionHandler playedBack) override;
    void holdSegment(std::shared_ptr<AudioFile> file, FrameRange window, CompletionHandler playedBack) override;
    void setPlan(PassPlan plan) override;
    bool moveEnd(std::int64_t count) override;
    void play() override;
    void pause() override;
    void stop() override;
    [[nodiscard]] std::optional<double> sampleTime() const override;
    [[nodiscard]] std::int64_t passesEnded() const override;

    enum class State { stopped, playing, paused };
    struct Schedule {
        std::shared_ptr<AudioFile> file;
        FrameRange segment;
        bool held = false;
        CompletionHandler playedBack;
    };

    [[nodiscard]] State state() const { return m_state; }
    [[nodiscard]] const std::optional<Schedule>& schedule() const { return m_schedule; }
    [[nodiscard]] const PassPlan& plan() const { return m_plan; }
    /// True once after each `scheduleSegment`, `holdSegment` or `stop`.
    bool takeRestart() { return std::exchange(m_restart, false); }
    /// The handler of the scheduled segment; afterwards there is none.
    [[nodiscard]] CompletionHandler takeHandler();

private:
    void takeSchedule(Schedule schedule);

    PlaybackGraph& m_graph;
    State m_state = State::stopped;
    std::optional<Schedule> m_schedule;
    PassPlan m_plan;
    bool m_restart = false;
};

class GraphMixer final : public MixerNode {
public:
    explicit GraphMixer(PlaybackGraph& graph)
        : m_graph(graph)
    {
    }
    ~GraphMixer() override;
    GraphMixer(const GraphMixer&) = delete;
    GraphMixer& operator=(const GraphMixer&) = delete;

    void setOutputVolume(double factor) override;
    [[nodiscard]] double outputVolume() const override { return m_volume; }

    [[nodiscard]] std::shared_ptr<const SharedGain> gain() const { return m_gain; }
    [[nodiscard]] GraphInputs& inputs() { return m_inputs; }

private:
    PlaybackGraph& m_graph;
    double m_volume = 1;
    std::shared_ptr<SharedGain> m_gain = std::make_shared<SharedGain>();
    GraphInputs m_inputs;
};

class GraphTimePitch final : public TimePitchNode {
public:
    explicit GraphTimePitch(std::function<void()> changed)
        : m_changed(std::move(changed))
    {
    }

    void setRate(double rate) override;
    [[nodiscard]] double rate() const override { return m_rate; }
    void setPitch(double pitchCents) override;
    [[nodiscard]] double pitch() const override { return m_pitchCents; }
    void setKeepsFormants(bool keeps) override;
    [[nodiscard]] bool keepsFormants() const override { return m_keepsFormants; }

    [[nodiscard]] GraphInputs& inputs() { return m_inputs; }

private:
    std::function<void()> m_changed;
    double m_rate = 1;
    double m_pitchCents = 0;
    bool m_keepsFormants = false;
    GraphInputs m_inputs;
};

class GraphEqualizer final : public EqualizerNode {
public:
    explicit GraphEqualizer(std::function<void()> changed)
        : m_changed(std::move(changed))
    {
    }

    void setGain(int band, float gainDb) override;
    [[nodiscard]] float gain(int band) const override;
    void setBypass(bool bypassed) override;
    [[nodiscard]] bool bypass() const override { return m_bypass; }

private:
    std::function<void()> m_changed;
    std::array<float, bandCount> m_gainsDb{};
    bool m_bypass = true;
};

}  // namespace quillet
