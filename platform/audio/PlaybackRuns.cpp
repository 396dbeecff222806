// What PlaybackGraph does with the runs that sound: begins them, lets them go on, and tells what of them has been heard.
#include "platform/audio/PlaybackGraph.h"

#include "platform/audio/ResampledFile.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace quillet {
namespace {

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
    if (sounding.segment != framesOf(wanted.segment) || sounding.held != wanted.held
        || sounding.own.rate.value_or(m_timePitch.rate()) != m_timePitch.rate()
        || sounding.own.pitchCents.value_or(m_timePitch.pitch()) != m_timePitch.pitch())
        return false;
    m_pass = report.passesEnded;
    m_renderer.release(m_generation, m_pass);
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
    const Pass first{ .segment = segment, .pauseFrames = 0, .own = {}, .held = schedule.held };
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
    const GraphPlayer& player = *m_sounding.front();
    RunPlan plan = planOf(player.plan());
    Pass present = m_run->pass(m_pass).pass;
    const FrameRange wanted = player.schedule() ? framesOf(player.schedule()->segment) : present.segment;
    if (std::exchange(present.segment, wanted) == wanted && m_run->replan(m_pass, plan))
        m_source.wake();
    else
        goOnInAnotherRun(present, std::move(plan));
}

/// Whether the sound has neither come to the end of its segment nor to the new one.
bool PlaybackGraph::canMoveEnd(const GraphPlayer& player, std::int64_t count)
{
    if (m_run == nullptr || m_startWaits || m_sounding.empty() || m_sounding.front() != &player)
        return true;
    const OutputReport report = m_stage.report();
    takePlaces();
    if (report.generation != m_generation || m_mapGeneration != m_generation)
        return true;
    const double position = m_map.sourceAt(static_cast<double>(report.outputFrame));
    const auto end = static_cast<double>(m_run->pass(m_pass).startFrame) + static_cast<double>(count) * m_framesPerFileFrame;
    return report.passesEnded == m_pass && position < end;
}

/// What the present run has prepared is not what is to be heard any more: another run goes on with the `present` pass from
/// where the sound is, or from the pass's end where the sound is beyond it already, and is entered as far along as the sound is
/// by then.
void PlaybackGraph::goOnInAnotherRun(Pass present, RunPlan plan)
{
    const OutputReport report = m_stage.report();
    takePlaces();
    if (report.generation != m_generation || m_mapGeneration != m_generation) {
        // Not heard yet.
        startRun(voices());
        return;
    }
    const PlacedPass placed = m_run->pass(m_pass);
    const auto end = static_cast<double>(placed.startFrame + present.segment.count);
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
        start.offsetFrames = std::clamp<std::int64_t>(std::llround(position), 0, present.segment.count);
    }
    start.alignedFrame = std::llround(aligned);
    present.pauseFrames = 0;
    present.own = {};
    if (plan.lastPass != INT64_MAX)
        plan.lastPass -= m_pass;
    play(std::make_shared<Run>(++m_generation, m_sampleRate, m_run->sources, present, start, std::move(plan)));
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

RunPlan PlaybackGraph::planOf(const PassPlan& plan)
{
    const bool hasOwnSettings =
        std::ranges::any_of(plan.passes, [](const PlannedPass& pass) { return pass.rate || pass.pitchCents; });
    if (std::exchange(m_plansOwnSettings, hasOwnSettings) != hasOwnSettings)
        settingsChanged();
    RunPlan made;
    for (const PlannedPass& pass : plan.passes) {
        const FrameRange segment = framesOf(pass.segment);
        if (segment.count == 0)
            break;
        made.entries.push_back(
            { { segment, std::llround(pass.pauseSeconds * m_sampleRate), { pass.rate, pass.pitchCents }, pass.held },
              pass.times });
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

}  // namespace quillet
