#include "platform/audio/PlaybackGraph.h"

#include "platform/base/Require.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace quillet {
namespace {

/// After this long without a sound the device is let go, so that an idle window costs nothing.
constexpr double restAfterSeconds = 30;

double secondsSince(std::int64_t steadyNanoseconds)
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<double>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count() - steadyNanoseconds) * 1e-9;
}

}  // namespace

PlaybackGraph::PlaybackGraph(AudioOutput& output, Scheduler& scheduler)
    : m_output(output),
      m_scheduler(scheduler),
      m_timePitch([this] { settingsChanged(); }),
      m_equalizer([this] { settingsChanged(); }),
      m_renderer(m_stage, [this] { m_source.wake(); }),
      m_source([this] { m_renderWake.wake(); }),
      m_render(m_renderer, m_renderWake, [this] { m_output.framesReady(); })
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
        endTake();
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
    m_endingsWatch = m_scheduler.watch(m_stage.endings().descriptor(), [this] { endingsPassed(); });
    m_render.prepare(m_sampleRate);
    m_output.start(m_sampleRate, m_stage, [this](AudioOutput::State state) {
        if (m_outputChanged)
            m_outputChanged(state);
    });
    beginRest();
}

void PlaybackGraph::prepare(int sampleRate)
{
    if (sampleRate == m_sampleRate)
        return;
    // What sounds would go on at the wrong pitch.
    endTake();
    m_sampleRate = sampleRate;
    m_output.setSampleRate(sampleRate);
    m_render.prepare(sampleRate);
    settingsChanged();
}

double PlaybackGraph::presentationLatencySeconds() const
{
    return m_output.latencySeconds() + static_cast<double>(Limiter::delayFrames) / m_sampleRate;
}

void PlaybackGraph::playerChanged(const GraphPlayer&)
{
    m_dirty = true;
    commit();
}

void PlaybackGraph::commitChange()
{
    --m_changeDepth;
    commit();
}

/// Brings the sound in line with the nodes.
void PlaybackGraph::commit()
{
    if (m_changeDepth > 0 || !std::exchange(m_dirty, false))
        return;
    std::vector<Voice> voices;
    collectVoices(m_timePitch, {}, voices);
    if (voices.empty()) {
        endTake();
        return;
    }
    bool restart = m_take == nullptr;
    bool paused = false;
    for (const Voice& voice : voices) {
        restart |= voice.player->takeRestart();
        paused |= voice.player->state() == GraphPlayer::State::paused;
    }
    if (restart && !adoptPass(voices))
        startTake(voices);
    followHint();
    if (paused)
        m_stage.pause(m_epoch);
    else
        m_stage.resume();
}

void PlaybackGraph::startTake(const std::vector<Voice>& voices)
{
    const auto& schedule = *voices.front().player->schedule();
    prepare(schedule.file->sampleRate());
    std::vector<TakeSource> sources;
    m_sounding.clear();
    for (const Voice& voice : voices) {
        sources.push_back({ voice.player->schedule()->file, voice.gains });
        m_sounding.push_back(voice.player);
    }
    ++m_epoch;
    m_pass = 0;
    m_take = std::make_shared<Take>(m_epoch, m_sampleRate, std::move(sources), schedule.segment);
    m_take->setNext(voices.front().player->hint());
    settingsChanged();
    m_restTask.cancel();
    m_output.resume();
    m_stage.setEpoch(m_epoch, OutputStage::Content::take);
    m_source.play(m_take);
    m_render.play(m_take);
}

/// Takes over a pass that sounds already, because it was hinted at; false when what is wanted is something else.
bool PlaybackGraph::adoptPass(const std::vector<Voice>& voices)
{
    if (m_take == nullptr || voices.size() != m_sounding.size())
        return false;
    const OutputReport report = m_stage.report();
    if (report.epoch != m_take->epoch || report.takeEnded || report.passesEnded <= m_pass)
        return false;
    const Pass pass = m_take->pass(report.passesEnded);
    for (std::size_t i = 0; i < voices.size(); ++i) {
        const GraphPlayer& player = *voices[i].player;
        const bool same = &player == m_sounding[i] && player.state() == GraphPlayer::State::playing
            && player.schedule()->file == m_take->sources[i].file && voices[i].gains == m_take->sources[i].gains
            && player.schedule()->segment == pass.segment;
        if (!same)
            return false;
    }
    m_pass = report.passesEnded;
    return true;
}

void PlaybackGraph::endTake()
{
    m_sounding.clear();
    if (m_take == nullptr)
        return;
    m_take.reset();
    ++m_epoch;
    m_stage.setEpoch(m_epoch, OutputStage::Content::silence);
    m_stage.resume();
    m_source.stop();
    m_render.play(nullptr);
    beginRest();
}

/// Lets the take go on with what the player says will follow. What was written ahead of something else is cut off.
void PlaybackGraph::followHint()
{
    if (m_take == nullptr || m_sounding.empty())
        return;
    const auto next = m_sounding.front()->hint();
    if (m_take->next() == next)
        return;
    m_take->setNext(next);
    const OutputReport report = m_stage.report();
    const std::int64_t heard = report.epoch == m_take->epoch ? std::max(report.passesEnded, m_pass) : 0;
    if (m_take->passCount() - 1 > heard && m_take->pass(heard + 1).segment != next) {
        m_take->closed.store(true, std::memory_order_release);
        m_stage.closeTake(m_take->epoch);
        m_renderWake.wake();
    }
    m_source.wake();
}

void PlaybackGraph::endingsPassed()
{
    m_stage.endings().clear();
    const OutputReport report = m_stage.report();
    if (m_take == nullptr || report.epoch != m_take->epoch || report.passesEnded <= m_pass)
        return;
    if (report.takeEnded)
        beginRest();
    std::vector<PlayerNode::CompletionHandler> handlers;
    for (GraphPlayer* player : m_sounding)
        if (auto handler = player->takeHandler())
            handlers.push_back(std::move(handler));
    for (const auto& handler : handlers)
        handler();
}

std::optional<double> PlaybackGraph::sampleTime(const GraphPlayer& player)
{
    if (m_take == nullptr || std::ranges::find(m_sounding, &player) == m_sounding.end())
        return std::nullopt;
    const OutputReport report = m_stage.report();
    if (report.epoch != m_take->epoch)
        return std::nullopt;
    const double latency = presentationLatencySeconds();
    // What was handed over goes on being heard for the latency after the sound stopped moving.
    const double limit = report.slope > 0 ? 0.1 : latency;
    const double elapsed = m_output.isRealTime() ? std::clamp(secondsSince(report.steadyNanoseconds), 0.0, limit) : 0;
    const double heard = report.sourceFrame + (elapsed - latency) * m_sampleRate * m_timePitch.rate();
    return std::max(0.0, heard - static_cast<double>(m_take->pass(m_pass).startFrame));
}

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
    m_stage.setLimiting(!flat || m_timePitch.rate() != 1 || m_timePitch.pitch() != 0 || m_sounding.size() > 1);
    m_renderWake.wake();
}

void PlaybackGraph::beginRest()
{
    m_restTask = m_scheduler.after(restAfterSeconds, [this] { m_output.suspend(); });
}

}  // namespace quillet
