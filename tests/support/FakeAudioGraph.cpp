#include "tests/support/FakeAudioGraph.h"

#include "platform/base/Require.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quillet {

class FakeAudioGraph::Player final : public PlayerNode {
public:
    Player(FakeAudioGraph& graph, std::shared_ptr<Node> node)
        : m_graph(graph),
          m_node(std::move(node))
    {
    }
    ~Player() override
    {
        m_node->isInGraph = false;
        m_graph.remove(*this);
    }
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    void scheduleSegment(std::shared_ptr<AudioFile> file, FrameRange segment, CompletionHandler playedBack) override
    {
        take(std::move(file), segment, false, std::move(playedBack));
    }
    void holdSegment(std::shared_ptr<AudioFile> file, FrameRange window, CompletionHandler playedBack) override
    {
        take(std::move(file), window, true, std::move(playedBack));
    }
    void setPlan(PassPlan plan) override { m_node->plan = std::move(plan); }
    void play() override
    {
        m_node->isSounding = m_node->segment.has_value();
        m_graph.command("play", *m_node);
    }
    void pause() override
    {
        m_node->isSounding = false;
        m_graph.command("pause", *m_node);
    }
    void stop() override
    {
        m_node->isSounding = false;
        m_node->segment.reset();
        m_graph.command("stop", *m_node);
    }
    [[nodiscard]] std::optional<double> sampleTime() const override { return m_node->sampleTime; }
    [[nodiscard]] std::int64_t passesEnded() const override { return m_node->passesEnded; }

    [[nodiscard]] int index() const { return m_node->index; }

private:
    void take(std::shared_ptr<AudioFile> file, FrameRange segment, bool held, CompletionHandler playedBack)
    {
        REQUIRE(file && segment.count > 0 && segment.start >= 0);
        m_node->file = std::move(file);
        m_node->segment = segment;
        m_node->isHeld = held;
        m_node->plan = {};
        ++m_node->scheduleCount;
        m_node->completions.push_back(std::move(playedBack));
        m_graph.command("schedule", *m_node);
    }

    FakeAudioGraph& m_graph;
    std::shared_ptr<Node> m_node;
};

class FakeAudioGraph::Mixer final : public MixerNode {
public:
    Mixer(FakeAudioGraph& graph, std::shared_ptr<Node> node)
        : m_graph(graph),
          m_node(std::move(node))
    {
    }
    ~Mixer() override
    {
        m_node->isInGraph = false;
        m_graph.remove(*this);
    }
    Mixer(const Mixer&) = delete;
    Mixer& operator=(const Mixer&) = delete;

    void setOutputVolume(double factor) override { m_node->volume = factor; }
    [[nodiscard]] double outputVolume() const override { return m_node->volume; }

private:
    FakeAudioGraph& m_graph;
    std::shared_ptr<Node> m_node;
};

class FakeAudioGraph::TimePitch final : public TimePitchNode {
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

class FakeAudioGraph::Equalizer final : public EqualizerNode {
public:
    void setGain(int band, float gainDb) override { m_gainsDb.at(static_cast<std::size_t>(band)) = gainDb; }
    [[nodiscard]] float gain(int band) const override { return m_gainsDb.at(static_cast<std::size_t>(band)); }
    void setBypass(bool bypassed) override { m_bypassed = bypassed; }
    [[nodiscard]] bool bypass() const override { return m_bypassed; }

private:
    std::array<float, bandCount> m_gainsDb{};
    bool m_bypassed = false;
};

FakeAudioGraph::FakeAudioGraph()
    : m_timePitch(std::make_unique<TimePitch>()),
      m_equalizer(std::make_unique<Equalizer>())
{
}

FakeAudioGraph::~FakeAudioGraph() = default;

std::vector<int> FakeAudioGraph::playersHeard() const
{
    std::vector<int> indices;
    collectPlayers(*m_timePitch, indices);
    return indices;
}

void FakeAudioGraph::complete(const Node& player)
{
    // A copy, as the handler may schedule the next segment.
    if (const auto handler = player.completions.back())
        handler();
}

std::unique_ptr<PlayerNode> FakeAudioGraph::makePlayer()
{
    players.push_back(std::make_shared<Node>(static_cast<int>(players.size())));
    return std::make_unique<Player>(*this, players.back());
}

std::unique_ptr<MixerNode> FakeAudioGraph::makeMixer()
{
    mixers.push_back(std::make_shared<Node>(static_cast<int>(mixers.size())));
    return std::make_unique<Mixer>(*this, mixers.back());
}

TimePitchNode& FakeAudioGraph::timePitch() { return *m_timePitch; }

EqualizerNode& FakeAudioGraph::equalizer() { return *m_equalizer; }

void FakeAudioGraph::connect(AudioNode& source, AudioNode& destination)
{
    auto& inputs = m_inputs[&destination];
    if (&destination == m_timePitch.get())
        inputs.clear();
    inputs.push_back(&source);
}

void FakeAudioGraph::disconnectInput(AudioNode& destination) { m_inputs.erase(&destination); }

void FakeAudioGraph::beginChange() { ++m_changeDepth; }

void FakeAudioGraph::commitChange()
{
    REQUIRE(m_changeDepth > 0);
    if (--m_changeDepth == 0 && !m_change.empty())
        batches.push_back(std::exchange(m_change, {}));
}

void FakeAudioGraph::command(const std::string& what, const Node& player)
{
    const GraphChange change(*this);
    m_change.push_back(what + ' ' + std::to_string(player.index));
}

void FakeAudioGraph::remove(AudioNode& node)
{
    m_inputs.erase(&node);
    for (auto& [destination, inputs] : m_inputs)
        std::erase(inputs, &node);
}

void FakeAudioGraph::collectPlayers(const AudioNode& destination, std::vector<int>& indices) const
{
    const auto inputs = m_inputs.find(&destination);
    if (inputs == m_inputs.end())
        return;
    for (const AudioNode* node : inputs->second) {
        if (const auto* player = dynamic_cast<const Player*>(node))
            indices.push_back(player->index());
        else
            collectPlayers(*node, indices);
    }
}

}  // namespace quillet
