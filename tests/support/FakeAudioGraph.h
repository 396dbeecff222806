// An audio graph that sounds nothing: it writes down what it is told, in the batches in which it would reach the sound, and
// leaves it to the test when a segment ends - late, twice or never.
// Threads: one.
#pragma once

#include "platform/audio/AudioGraph.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
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
    int startCount = 0;
    std::optional<int> preparedRate;

    FakeAudioGraph();
    ~FakeAudioGraph() override;

    /// The indices of the players that lead to the time-pitch unit, in the order in which they were connected.
    [[nodiscard]] std::vector<int> playersHeard() const;
    /// The end of the segment that `player` was given last. Harmless if it has no handler.
    static void complete(const Node& player);

    [[nodiscard]] std::unique_ptr<PlayerNode> makePlayer() override;
    [[nodiscard]] std::unique_ptr<MixerNode> makeMixer() override;
    TimePitchNode& timePitch() override;
    EqualizerNode& equalizer() override;
    void connect(AudioNode& source, AudioNode& destination) override;
    void disconnectInput(AudioNode& destination) override;
    void start() override { ++startCount; }
    [[nodiscard]] bool isRunning() const override { return startCount > 0; }
    void prepare(int sampleRate) override { preparedRate = sampleRate; }
    [[nodiscard]] double presentationLatencySeconds() const override { return latencySeconds; }

protected:
    void beginChange() override;
    void commitChange() override;

private:
    class Player;
    class Mixer;
    class TimePitch;
    class Equalizer;

    void command(const std::string& what, const Node& player);
    void remove(AudioNode& node);
    void collectPlayers(const AudioNode& destination, std::vector<int>& indices) const;

    std::unique_ptr<TimePitch> m_timePitch;
    std::unique_ptr<Equalizer> m_equalizer;
    std::map<const AudioNode*, std::vector<AudioNode*>> m_inputs;
    int m_changeDepth = 0;
    std::vector<std::string> m_change;
};

}  // namespace quillet
