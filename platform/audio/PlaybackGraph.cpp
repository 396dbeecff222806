#include "platform/audio/PlaybackGraph.h"

#include "platform/audio/ResampledFile.h"
#include "platform/base/Require.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace quillet {
namespace {

/// After this long without a sound the device is let go, so that an idle window costs nothing.
constexpr double restAfterSeconds = 30;
/// A start that follows on the heels of another waits for that to be heard, so that a stream of edits is heard in steps and not
/// only when it ends; at most so long. As long as the output's rate may stay unknown.
constexpr double startWaitSeconds = 0.1;
constexpr double rateWaitSeconds = 0.5;
/// So long ago is nobody asked for what was heard where, however late the main thread is.
constexpr double keptMapSeconds = 30;
/// Longer than this no device takes between two blocks.
constexpr double maxBlockSeconds = 0.4;

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

// ---- Runs ----

/// Takes over a pass that sounds already (or is about to, after its pause), because it was planned; false when what is wanted
/// is something else.
bool PlaybackGraph::adoptPass(const std::vector<Voice>& voices)
{
    if (m_run == nullptr || m_startWaits || voices.size() != m_sounding.size())
        return false;
    const OutputReport report = m_stage.report();
    if (report.generation != m_run->generation || report.runEnded || report.passesEnded <= m_pass)
        return false;
    for (std::size_t i = 0; i < voices.size(); ++i) {
        const GraphPlayer& player = *voices[i].player;
        const bool same = &player == m_sounding[i] && player.state() == GraphPlayer::State::playing
            && player.schedule()->file == m_files[i] && voices[i].gains == m_run->sources[i].gains;
        if (!same)
            return false;
    }
    const Pass sounding = m_run->pass(report.passesEnded).pass;
    const auto& wanted = *voices.front().player->schedule();
    if (sounding.segment != framesOf(wanted.segment) || sounding.held != wanted.held)
        return false;
    m_pass = report.passesEnded;
    return true;
}

/// Starts what the players say, at once or as soon as that makes sense.
void PlaybackGraph::startWhenPossible()
{
    const bool rateUnknown = m_running && m_output.isRealTime() && m_output.sampleRate() == 0;
    const bool oneIsOnItsWay = m_run != nullptr && m_stage.report().generation < m_generation;
    const bool begins = !std::exchange(m_startWaits, rateUnknown || oneIsOnItsWay);
    if (!m_startWaits) {
        m_startTask.cancel();
        startRun(voices());
        return;
    }
    if (rateUnknown)
        endRest();
    if (begins)
        m_startTask = m_scheduler.after(rateUnknown ? rateWaitSeconds : startWaitSeconds, [this] {
            m_startWaits = false;
            startRun(voices());
        });
}

void PlaybackGraph::startRun(const std::vector<Voice>& voices)
{
    m_startWaits = false;
    if (voices.empty())
        return;
    const auto& schedule = *voices.front().player->schedule();
    prepare(schedule.file->sampleRate());
    m_framesPerFileFrame = static_cast<double>(m_sampleRate) / schedule.file->sampleRate();
    m_sounding.clear();
    m_files.clear();
    m_length = 0;
    for (const Voice& voice : voices) {
        const auto& file = voice.player->schedule()->file;
        m_sounding.push_back(voice.player);
        m_files.push_back(file);
        m_length = std::max(
            m_length,
            static_cast<std::int64_t>(std::llround(static_cast<double>(file->length()) * m_sampleRate / file->sampleRate())));
    }
    m_pass = 0;
    m_passesBefore = 0;
    const FrameRange segment = framesOf(schedule.segment);
    if (segment.count == 0) {
        endRun();
        return;
    }
    const Pass first{ .segment = segment, .pauseFrames = 0, .rate = std::nullopt, .held = schedule.held };
    play(std::make_shared<Run>(++m_generation, m_sampleRate, sourcesOf(voices), first, Run::Start{},
                               planOf(voices.front().player->plan())));
    const auto isPaused = [](const Voice& voice) { return voice.player->state() == GraphPlayer::State::paused; };
    if (std::ranges::any_of(voices, isPaused))
        m_stage.pause(m_generation);
}

void PlaybackGraph::play(std::shared_ptr<Run> run)
{
    m_run = std::move(run);
    settingsChanged();
    endRest();
    m_output.setSampleRate(m_sampleRate);
    m_stage.enterRun(m_generation);
    m_source.play(m_run);
    m_render.play(m_run);
}

void PlaybackGraph::endRun()
{
    m_startWaits = false;
    m_startTask.cancel();
    m_sounding.clear();
    if (m_run == nullptr)
        return;
    m_run.reset();
    m_stage.enterSilence(++m_generation);
    m_source.stop();
    m_render.play(nullptr);
    m_output.setSampleRate(0);
    beginRest();
}

/// Lets the run go on with what the first player says will follow.
void PlaybackGraph::followPlan()
{
    if (m_run == nullptr || m_sounding.empty())
        return;
    RunPlan plan = planOf(m_sounding.front()->plan());
    if (m_run->replan(m_pass, plan))
        m_source.wake();
    else
        goOnInAnotherRun(std::move(plan));
}

/// What the present run has prepared is not what is to follow its pass any more: another run goes on from where the sound is,
/// or from the pass's end where the sound is beyond it already, and is entered as far along as the sound is by then.
void PlaybackGraph::goOnInAnotherRun(RunPlan plan)
{
    const OutputReport report = m_stage.report();
    takePlaces();
    if (report.generation != m_generation || m_mapGeneration != m_generation) {
        // Not heard yet.
        startRun(voices());
        return;
    }
    const PlacedPass placed = m_run->pass(m_pass);
    const auto end = static_cast<double>(placed.startFrame + placed.pass.segment.count);
    const auto now = static_cast<double>(report.outputFrame);
    const MapPiece& piece = m_map.pieceAt(now);
    Run::Start start;
    double aligned = now;
    if (piece.slope == 0 && piece.source <= static_cast<double>(placed.startFrame)) {
        // In the pause before it.
        const auto passed = static_cast<std::int64_t>(now - piece.output);
        const std::int64_t pause = m_pass == 0 ? m_run->start.pauseFrames : placed.pass.pauseFrames;
        start.pauseFrames = std::max<std::int64_t>(0, pause - passed);
    } else {
        if (piece.sourceAt(now) > end || (piece.slope == 0 && piece.source >= end))
            aligned = m_map.lastOutputAt(end, now);
        const double position = std::min(m_map.sourceAt(aligned), end) - static_cast<double>(placed.startFrame);
        start.offsetFrames = std::clamp<std::int64_t>(std::llround(position), 0, placed.pass.segment.count);
    }
    start.alignedFrame = std::llround(aligned);
    Pass first = placed.pass;
    first.pauseFrames = 0;
    if (plan.lastPass != INT64_MAX)
        plan.lastPass -= m_pass;
    play(std::make_shared<Run>(++m_generation, m_sampleRate, m_run->sources, first, start, std::move(plan)));
    m_passesBefore += m_pass;
    m_pass = 0;
}

std::vector<RunSource> PlaybackGraph::sourcesOf(const std::vector<Voice>& voices) const
{
    std::vector<RunSource> sources;
    for (const Voice& voice : voices) {
        const auto& file = voice.player->schedule()->file;
        if (file->sampleRate() == m_sampleRate)
            sources.push_back({ file, voice.gains });
        else
            sources.push_back({ std::make_shared<ResampledFile>(file, m_sampleRate), voice.gains });
    }
    return sources;
}

/// A segment of the first player's file in frames of the graph, up to the end of the longest file.
FrameRange PlaybackGraph::framesOf(FrameRange segment) const
{
    const auto scaled = [this](std::int64_t frame) {
        return static_cast<std::int64_t>(std::llround(static_cast<double>(frame) * m_framesPerFileFrame));
    };
    const std::int64_t start = std::min(scaled(segment.start), m_length);
    return { start, std::clamp<std::int64_t>(scaled(segment.start + segment.count) - start, 0, m_length - start) };
}

RunPlan PlaybackGraph::planOf(const PassPlan& plan) const
{
    RunPlan made;
    for (const PlannedPass& pass : plan.passes) {
        const FrameRange segment = framesOf(pass.segment);
        if (segment.count == 0)
            break;
        made.entries.push_back(
            { { segment, std::llround(pass.pauseSeconds * m_sampleRate), pass.rate, pass.held }, pass.times });
    }
    if (plan.passLimit)
        made.lastPass = *plan.passLimit - 1 - m_passesBefore;
    return made;
}

// ---- What has been heard ----

void PlaybackGraph::newsArrived()
{
    m_stage.news().clear();
    if (m_startWaits) {
        // What has ended since is not what was asked for last.
        startWhenPossible();
        return;
    }
    const OutputReport report = m_stage.report();
    if (m_run == nullptr || report.generation != m_generation || report.passesEnded <= m_pass)
        return;
    if (report.runEnded)
        beginRest();
    std::vector<PlayerNode::CompletionHandler> handlers;
    for (GraphPlayer* player : m_sounding)
        if (auto handler = player->takeHandler())
            handlers.push_back(std::move(handler));
    for (const auto& handler : handlers)
        handler();
}

/// Brings the map up to date; places of runs that are not heard any more are left out.
void PlaybackGraph::takePlaces()
{
    while (const auto place = m_stage.places().pop()) {
        if (place->generation == m_mapGeneration) {
            m_map.append(place->piece);
        } else {
            m_mapGeneration = place->generation;
            m_map.reset(place->piece);
        }
    }
}

std::optional<double> PlaybackGraph::sampleTime(const GraphPlayer& player)
{
    takePlaces();
    if (m_run == nullptr || m_startWaits || std::ranges::find(m_sounding, &player) == m_sounding.end())
        return std::nullopt;
    const OutputReport report = m_stage.report();
    if (report.generation != m_generation || m_mapGeneration != m_generation)
        return std::nullopt;
    m_map.forgetBefore(static_cast<double>(report.outputFrame) - keptMapSeconds * m_sampleRate);
    const double latency = presentationLatencySeconds();
    // What was handed over goes on being heard for the latency after the sound stopped moving.
    const double limit = report.moving ? maxBlockSeconds : latency;
    const double elapsed = m_output.isRealTime() ? std::clamp(secondsSince(report.steadyNanoseconds), 0.0, limit) : 0;
    const double heard = static_cast<double>(report.outputFrame) + (elapsed - latency) * m_sampleRate;
    // Before it was entered something else was heard, or what it goes on from.
    if (heard < static_cast<double>(report.enteredFrame) && !m_run->start.alignedFrame)
        return std::nullopt;
    const double frame = m_map.sourceAt(heard) - static_cast<double>(m_run->pass(m_pass).startFrame);
    return std::max(0.0, frame) / m_framesPerFileFrame;
}

std::int64_t PlaybackGraph::passesEnded(const GraphPlayer& player)
{
    if (m_run == nullptr || m_startWaits || std::ranges::find(m_sounding, &player) == m_sounding.end())
        return 0;
    const OutputReport report = m_stage.report();
    return m_passesBefore + (report.generation == m_generation ? report.passesEnded : 0);
}

std::int64_t PlaybackGraph::framesSinceEnd()
{
    const OutputReport report = m_stage.report();
    return report.runEnded ? report.framesSinceEnd : 0;
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
    const bool resamples =
        std::ranges::any_of(m_files, [this](const auto& file) { return file->sampleRate() != m_sampleRate; });
    m_stage.setLimiting(!flat || m_timePitch.rate() != 1 || m_timePitch.pitch() != 0 || m_files.size() > 1 || resamples);
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
