// An audio graph that sounds nothing: it writes down what it is told, in the batches in which it would reach the sound, and
// leaves it to the test when a segment ends - late, twice or never.
// Threads: one.
#pragma once

#include "platform/audio/AudioGraph.h"
#include "platform/base/Require.h"

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillet {

class FakeAudioGraph final : public AudioGraph {
public:
    /// What became of one player or mixer; it stays when the node is gone.
    struct Node {
        explicit Node(int place)
            : index(place)
        {
        }

        int index;
        bool isInGraph = true;

        // Players
        std::shared_ptr<AudioFile> file;
        std::optional<FrameRange> segment;
        bool isHeld = false;
        PassPlan plan;
        std::int64_t passesEnded = 0;
        bool isSounding = false;
        std::optional<double> sampleTime;
        /// How many segments were scheduled, and the completion handlers of them all.
        int scheduleCount = 0;
        std::vector<PlayerNode::CompletionHandler> completions;

        // Mixers
        double volume = 1;
    };

    /// In the order in which they were made.
    std::vector<std::shared_ptr<Node>> players;
    std::vector<std::shared_ptr<Node>> mixers;
    /// Commands to players that reach the sound together, as "<command> <player's index>".
    std::vector<std::vector<std::string>> batches;

    double latencySeconds = 0;
    ChannelMode channels = ChannelMode::stereo;
    int startCount = 0;
    std::optional<int> preparedRate;

    /// The indices of the players that lead to the time-pitch unit, in the order in which they were connected.
    [[nodiscard]] std::vector<int> playersHeard() const
    {
        std::vector<int> indices;
        collectPlayers(m_timePitch, indices);
        return indices;
    }
    /// The end of the segment that `player` was given last. Harmless if it has no handler.
    static void complete(const Node& player)
    {
        // A copy, as the handler may schedule the next segment.
        if (const auto handler = player.completions.back())
            handler();
    }

    [[nodiscard]] std::unique_ptr<PlayerNode> makePlayer() override { return make<Player>(players); }
    [[nodiscard]] std::unique_ptr<MixerNode> makeMixer() override { return make<Mixer>(mixers); }
    TimePitchNode& timePitch() override { return m_timePitch; }
    EqualizerNode& equalizer() override { return m_equalizer; }
    void setChannels(ChannelMode mode) override { channels = mode; }
    void connect(AudioNode& source, AudioNode& destination) override
    {
        auto& inputs = m_inputs[&destination];
        if (&destination == &m_timePitch)
            inputs.clear();
        inputs.push_back(&source);
    }
    void disconnectInput(AudioNode& destination) override { m_inputs.erase(&destination); }
    void start() override { ++startCount; }
    [[nodiscard]] bool isRunning() const override { return startCount > 0; }
    void prepare(int sampleRate) override { preparedRate = sampleRate; }
    [[nodiscard]] double presentationLatencySeconds() const override { return latencySeconds; }

protected:
    void beginChange() override { ++m_changeDepth; }
    void commitChange() override
    {
        REQUIRE(m_changeDepth > 0);
        if (--m_changeDepth == 0 && !m_change.empty())
            batches.push_back(std::exchange(m_change, {}));
    }

private:
    /// What players and mixers share: their node, which they leave at their end.
    template <typename Interface> struct Part : Interface {
        Part(FakeAudioGraph& owner, std::shared_ptr<Node> itsNode)
            : graph(owner),
              node(std::move(itsNode))
        {
        }
        ~Part() override
        {
            node->isInGraph = false;
            graph.remove(*this);
        }
        Part(const Part&) = delete;
        Part& operator=(const Part&) = delete;

        FakeAudioGraph& graph;
        std::shared_ptr<Node> node;
    };

    class Player final : public Part<PlayerNode> {
    public:
        using Part::Part;
        void scheduleSegment(std::shared_ptr<AudioFile> file, FrameRange segment, CompletionHandler playedBack) override
        {
            take(std::move(file), segment, false, std::move(playedBack));
        }
        void holdSegment(std::shared_ptr<AudioFile> file, FrameRange window, CompletionHandler playedBack) override
        {
            take(std::move(file), window, true, std::move(playedBack));
        }
        void setPlan(PassPlan plan) override { node->plan = std::move(plan); }
        bool moveEnd(std::int64_t count) override
        {
            REQUIRE(node->segment && count > 0);
            node->segment->count = count;
            return true;
        }
        void play() override
        {
            node->isSounding = node->segment.has_value();
            graph.command("play", *node);
        }
        void pause() override
        {
            node->isSounding = false;
            graph.command("pause", *node);
        }
        void stop() override
        {
            node->isSounding = false;
            node->segment.reset();
            graph.command("stop", *node);
        }
        [[nodiscard]] std::optional<double> sampleTime() const override { return node->sampleTime; }
        [[nodiscard]] std::int64_t passesEnded() const override { return node->passesEnded; }

    private:
        void take(std::shared_ptr<AudioFile> file, FrameRange segment, bool held, CompletionHandler playedBack)
        {
            REQUIRE(file && segment.count > 0 && segment.start >= 0);
            node->file = std::move(file);
            node->segment = segment;
            node->isHeld = held;
            node->plan = {};
            ++node->scheduleCount;
            node->completions.push_back(std::move(playedBack));
            graph.command("schedule", *node);
        }
    };

    class Mixer final : public Part<MixerNode> {
    public:
        using Part::Part;
        void setOutputVolume(double factor) override { node->volume = factor; }
        [[nodiscard]] double outputVolume() const override { return node->volume; }
    };

    class TimePitch final : public TimePitchNode {
    public:
        void setRate(double rate) override { m_rate = rate; }
        [[nodiscard]] double rate() const override { return m_rate; }
        void setPitch(double pitchCents) override { m_pitchCents = pitchCents; }
        [[nodiscard]] double pitch() const override { return m_pitchCents; }
        void setKeepsFormants(bool keeps) override { m_keepsFormants = keeps; }
        [[nodiscard]] bool keepsFormants() const override { return m_keepsFormants; }

    private:
        double m_rate = 1;
        double m_pitchCents = 0;
        bool m_keepsFormants = false;
    };

    class Equalizer final : public EqualizerNode {
    public:
        void setGain(int band, float gainDb) override { m_gainsDb.at(static_cast<std::size_t>(band)) = gainDb; }
        [[nodiscard]] float gain(int band) const override { return m_gainsDb.at(static_cast<std::size_t>(band)); }
        void setBypass(bool bypassed) override { m_bypassed = bypassed; }
        [[nodiscard]] bool bypass() const override { return m_bypassed; }

    private:
        std::array<float, bandCount> m_gainsDb{};
        bool m_bypassed = false;
    };

    template <typename Kind> std::unique_ptr<Kind> make(std::vector<std::shared_ptr<Node>>& nodes)
    {
        nodes.push_back(std::make_shared<Node>(static_cast<int>(nodes.size())));
        return std::make_unique<Kind>(*this, nodes.back());
    }
    void command(const std::string& what, const Node& player)
    {
        const GraphChange change(*this);
        m_change.push_back(what + ' ' + std::to_string(player.index));
    }
    void remove(AudioNode& node)
    {
        m_inputs.erase(&node);
        for (auto& [destination, inputs] : m_inputs)
            std::erase(inputs, &node);
    }
    void collectPlayers(const AudioNode& destination, std::vector<int>& indices) const
    {
        const auto inputs = m_inputs.find(&destination);
        if (inputs == m_inputs.end())
            return;
        for (const AudioNode* node : inputs->second) {
            if (const auto* player = dynamic_cast<const Player*>(node))
                indices.push_back(player->node->index);
            else
                collectPlayers(*node, indices);
        }
    }

    TimePitch m_timePitch;
    Equalizer m_equalizer;
    std::map<const AudioNode*, std::vector<AudioNode*>> m_inputs;
    int m_changeDepth = 0;
    std::vector<std::string> m_change;
};

}  // namespace quillet
