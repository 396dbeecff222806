#include "platform/audio/PlaybackGraph.h"

#include "platform/base/Require.h"

#include <algorithm>
#include <utility>

namespace quillet {
namespace {

/// After this long without a sound the device is let go, so that an idle window costs nothing.
constexpr double restAfterSeconds = 30;

}  // namespace

PlaybackGraph::PlaybackGraph(AudioOutput& output, Scheduler& scheduler)
    : m_output(output),
      m_scheduler(scheduler),
      m_timePitch([this] { settingsChanged(); }),
      m_equalizer([this] { settingsChanged(); }),
      m_renderer(m_stage, [this] { m_source.wake(); }),
      m_source([this] { m_renderWake.wake(); }, output.isRealTime()),
      m_render(m_renderer, m_renderWake, [this] { m_output.framesReady(); }, output.isRealTime())
{
    settingsChanged();
}

PlaybackGraph::~PlaybackGraph() { m_output.stop(); }

// ---- Building ----

std::unique_ptr<PlayerNode> PlaybackGraph::makePlayer() { return std::make_unique<GraphPlayer>(*this); }

std::unique_ptr<MixerNode> PlaybackGraph::makeMixer() { return std::make_unique<GraphMixer>(*this); }

GraphInputs& PlaybackGraph::inputsOf(AudioNode& node)
{
    if (auto* mixer = dynamic_cast<GraphMixer*>(&node))
        return mixer->inputs();
    auto* timePitch = dynamic_cast<GraphTimePitch*>(&node);
    REQUIRE(timePitch != nullptr);
    return timePitch->inputs();
}

void PlaybackGraph::setChannels(ChannelMode channels)
{
    m_channels = channels;
    settingsChanged();
}

void PlaybackGraph::connect(AudioNode& source, AudioNode& destination)
{
    auto& nodes = inputsOf(destination).nodes;
    if (&destination == &m_timePitch)
        nodes.clear();
    if (std::ranges::find(nodes, &source) == nodes.end())
        nodes.push_back(&source);
    m_dirty = true;
    commit();
}

void PlaybackGraph::disconnectInput(AudioNode& destination)
{
    inputsOf(destination).nodes.clear();
    m_dirty = true;
    commit();
}

/// Takes a node that is being destroyed out of everything that it leads into.
void PlaybackGraph::remove(AudioNode& node)
{
    if (std::ranges::find(m_sounding, &node) != m_sounding.end())
        endRun();
    std::vector<AudioNode*> reached{ &m_timePitch };
    while (!reached.empty()) {
        auto& nodes = inputsOf(*reached.back()).nodes;
        reached.pop_back();
        std::erase(nodes, &node);
        for (AudioNode* input : nodes)
            if (dynamic_cast<GraphMixer*>(input) != nullptr)
                reached.push_back(input);
    }
}

void PlaybackGraph::collectVoices(AudioNode& node, std::vector<std::shared_ptr<const SharedGain>> gains,
                                  std::vector<Voice>& voices) const
{
    if (auto* player = dynamic_cast<GraphPlayer*>(&node)) {
        if (player->schedule() && player->state() != GraphPlayer::State::stopped)
            voices.push_back({ player, std::move(gains) });
        return;
    }
    if (auto* mixer = dynamic_cast<GraphMixer*>(&node))
        gains.push_back(mixer->gain());
    for (AudioNode* input : inputsOf(node).nodes)
        collectVoices(*input, gains, voices);
}

// ---- Running ----

void PlaybackGraph::start()
{
    if (m_running)
        return;
    m_running = true;
    m_newsWatch = m_scheduler.watch(m_stage.news().descriptor(), [this] { newsArrived(); });
    m_render.prepare(m_sampleRate);
    m_output.start(m_stage, [this](AudioOutput::State state) { outputChanged(state); });
    beginRest();
}

void PlaybackGraph::outputChanged(AudioOutput::State state)
{
    if (m_startWaits)
        startWhenPossible();
    if (m_run == nullptr && m_output.sampleRate() > 0)
        prepare(m_output.sampleRate());
    if (m_outputState == state)
        return;
    m_outputState = state;
    if (m_outputChanged)
        m_outputChanged(state);
}

void PlaybackGraph::prepare(int sampleRate)
{
    const int rate = rateFor(sampleRate);
    if (rate == m_sampleRate)
        return;
    // What sounds would go on at the wrong pitch.
    endRun();
    m_sampleRate = rate;
    m_render.prepare(rate);
    settingsChanged();
}

/// The rate at which files of `fileRate` are played.
int PlaybackGraph::rateFor(int fileRate) const
{
    const int outputRate = m_output.sampleRate();
    return outputRate > 0 ? outputRate : fileRate;
}

double PlaybackGraph::presentationLatencySeconds() const
{
    return m_output.latencySeconds() + static_cast<double>(Limiter::delayFrames) / m_sampleRate;
}

void PlaybackGraph::playerChanged()
{
    m_dirty = true;
    commit();
}

void PlaybackGraph::commitChange()
{
    --m_changeDepth;
    commit();
}

std::vector<PlaybackGraph::Voice> PlaybackGraph::voices()
{
    std::vector<Voice> voices;
    collectVoices(m_timePitch, {}, voices);
    return voices;
}

/// Brings the sound in line with the nodes.
void PlaybackGraph::commit()
{
    if (m_changeDepth > 0 || !std::exchange(m_dirty, false))
        return;
    const std::vector<Voice> voices = this->voices();
    if (voices.empty()) {
        endRun();
        return;
    }
    bool restart = m_run == nullptr && !m_startWaits;
    bool paused = false;
    for (const Voice& voice : voices) {
        restart |= voice.player->takeRestart();
        paused |= voice.player->state() == GraphPlayer::State::paused;
    }
    if (restart && !adoptPass(voices))
        startWhenPossible();
    else if (!m_startWaits)
        followPlan();
    if (m_run == nullptr)
        return;
    if (paused) {
        m_stage.pause(m_generation);
        beginRest();
    } else {
        m_stage.resume(m_generation);
        endRest();
    }
}

// ---- Settings and rest ----

void PlaybackGraph::settingsChanged()
{
    BandGains gains{};
    if (!m_equalizer.bypass())
        for (int band = 0; band < EqualizerNode::bandCount; ++band)
            gains[static_cast<std::size_t>(band)] = static_cast<double>(m_equalizer.gain(band));
    const bool flat = std::ranges::all_of(gains, [](double gainDb) { return gainDb == 0; });
    m_stage.equalizer().setGains(flat ? gains : separatedGains(gains, m_sampleRate), m_sampleRate);
    m_renderer.setRate(m_timePitch.rate());
    m_renderer.setPitch(m_timePitch.pitch());
    m_renderer.setKeepsFormants(m_timePitch.keepsFormants());
    m_renderer.setChannels(m_channels);
    const bool resamples =
        std::ranges::any_of(m_files, [this](const auto& file) { return file->sampleRate() != m_sampleRate; });
    const bool changes = m_timePitch.rate() != 1 || m_timePitch.pitch() != 0 || m_plansOwnSettings;
    m_stage.setLimiting(!flat || m_channels != ChannelMode::stereo || changes || m_files.size() > 1 || resamples);
    m_renderWake.wake();
}

void PlaybackGraph::beginRest()
{
    if (!m_resting)
        m_restTask = m_scheduler.after(restAfterSeconds, [this] { m_output.suspend(); });
    m_resting = true;
}

void PlaybackGraph::endRest()
{
    m_resting = false;
    m_restTask.cancel();
    m_output.resume();
}

}  // namespace quillet
