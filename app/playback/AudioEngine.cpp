#include "app/playback/AudioEngine.h"

#include "AppCore/SharedInstance.h"
#include "platform/base/Require.h"

#include <algorithm>
#include <limits>

namespace quillet {
namespace {

constexpr double positionIntervalSeconds = 0.05;
constexpr double minimumTailSeconds = 0.02;

/// Truncated toward zero.
std::int64_t frameAt(double seconds, int sampleRate)
{
    const double frame = sampleRate * seconds;
    REQUIRE(frame >= -0x1p63 && frame < 0x1p63);
    return static_cast<std::int64_t>(frame);
}

/// The frames of `segment`; nothing when there are none, or they begin before the file's start.
std::optional<FrameRange> framesOf(const TimeRange& segment, int sampleRate)
{
    const std::int64_t start = frameAt(segment.start, sampleRate);
    const std::int64_t end = frameAt(segment.end, sampleRate);
    if (start < 0 || end <= start)
        return std::nullopt;
    return FrameRange{ start, end - start };
}

bool hasSound(const AudioFile& file, std::optional<FrameRange> frames) { return frames && frames->start < file.length(); }

double loopDelay(const PlaybackState& state)
{
    return static_cast<double>(state.loopDelaySeconds()) + static_cast<double>(state.loopDelayMilliseconds()) / 1000;
}

}  // namespace

AudioEngine::AudioEngine(AudioGraph& graph, Scheduler& scheduler)
    : m_graph(graph),
      m_scheduler(scheduler),
      m_player(graph.makePlayer()),
      m_self(std::make_shared<AudioEngine*>(this))
{
    m_graph.connect(*m_player, m_graph.timePitch());
    for (int band = 0; band < EqualizerNode::bandCount; ++band)
        eq().setGain(band, 0);
    eq().setBypass(true);
}

AudioEngine::~AudioEngine() = default;

AudioEngine& AudioEngine::shared() { return SharedInstance<AudioEngine>::get(); }

void AudioEngine::setAudioFile(std::shared_ptr<AudioFile> file)
{
    m_audioFile = std::move(file);
    if (m_audioFile)
        m_graph.prepare(m_audioFile->sampleRate());
}

void AudioEngine::setEQGain(double gain, int band)
{
    if (band >= 0 && band < EqualizerNode::bandCount)
        eq().setGain(band, static_cast<float>(gain));
}

// ---- Transport ----

bool AudioEngine::play(double fromSeconds, double toSeconds)
{
    const TimeRange segment{ fromSeconds, toSeconds };
    if (segment.isEmpty())
        return false;
    if (isInStemMode())
        return playStemMode(segment);
    if (!m_audioFile)
        return false;
    const GraphChange atOnce(m_graph);
    stop();
    if (!hasSound(*m_audioFile, framesOf(segment, m_audioFile->sampleRate())))
        return false;
    beginGeneration();
    schedule(*m_player, m_audioFile, segment, completionHandler());
    nextSegmentDidChange();
    m_player->play();
    startPositionTimer(segment.start, *m_player, m_audioFile->sampleRate());
    return true;
}

bool AudioEngine::playStemMode(const TimeRange& segment)
{
    const GraphChange atOnce(m_graph);
    stop();
    const auto sounds = [&segment](const StemNode& stem) {
        return hasSound(*stem.file, framesOf(segment, stem.file->sampleRate()));
    };
    StemNode& first = m_stemNodes.front();
    const int sampleRate = first.file->sampleRate();
    if (!framesOf(segment, sampleRate) || std::ranges::none_of(m_stemNodes, sounds))
        return false;
    beginGeneration();
    for (StemNode& stem : m_stemNodes)
        schedule(*stem.player, stem.file, segment, &stem == &first ? completionHandler() : nullptr);
    nextSegmentDidChange();
    forEachPlayer([](PlayerNode& player) { player.play(); });
    startPositionTimer(segment.start, *first.player, sampleRate);
    return true;
}

void AudioEngine::schedule(PlayerNode& player, const std::shared_ptr<AudioFile>& file, const TimeRange& segment,
                           PlayerNode::CompletionHandler playedBack)
{
    // A segment that is too short for a frame at another stem's rate is that stem's business: it is silent then.
    const auto frames = framesOf(segment, file->sampleRate());
    const FrameRange range = frames.value_or(FrameRange{ frameAt(segment.start, file->sampleRate()), 1 });
    if (heldWindow() == segment)
        player.holdSegment(file, range, std::move(playedBack));
    else
        player.scheduleSegment(file, range, std::move(playedBack));
}

PlayerNode& AudioEngine::primaryPlayer() { return isInStemMode() ? *m_stemNodes.front().player : *m_player; }

void AudioEngine::pause()
{
    const GraphChange atOnce(m_graph);
    forEachPlayer([](PlayerNode& player) { player.pause(); });
    m_positionTimer.cancel();
    m_followUp.cancel();
    // An end that is on its way already starts nothing either.
    m_transport = Transport::idle;
}

void AudioEngine::stop()
{
    const GraphChange atOnce(m_graph);
    advanceGeneration();
    forEachPlayer([](PlayerNode& player) { player.stop(); });
    m_positionTimer.cancel();
}

void AudioEngine::forEachPlayer(const std::function<void(PlayerNode&)>& action)
{
    if (!isInStemMode()) {
        action(*m_player);
        return;
    }
    for (StemNode& stem : m_stemNodes)
        action(*stem.player);
}

void AudioEngine::advanceGeneration()
{
    REQUIRE(m_generation < std::numeric_limits<std::int64_t>::max());
    ++m_generation;
    m_transport = Transport::idle;
}

void AudioEngine::beginGeneration()
{
    advanceGeneration();
    m_transport = Transport::scheduled;
    if (!m_graph.isRunning())
        m_graph.start();
}

void AudioEngine::startPositionTimer(double fileStart, const PlayerNode& primaryPlayer, int sampleRate)
{
    m_positionTimer = m_scheduler.every(positionIntervalSeconds, [this, fileStart, player = &primaryPlayer, sampleRate] {
        const auto state = m_appState.lock();
        const auto sampleTime = player->sampleTime();
        if (!state || !sampleTime)
            return;
        const double limit =
            state->holdEnabled() ? state->holdPosition() + PlaybackState::holdWindowSeconds : state->region().end;
        state->setPlaybackPosition(std::min(fileStart + *sampleTime / sampleRate, limit));
    });
}

// ---- What follows a segment ----

PlayerNode::CompletionHandler AudioEngine::completionHandler()
{
    return [self = std::weak_ptr(m_self), generation = m_generation] {
        if (const auto engine = self.lock())
            (*engine)->handleCompletion(generation);
    };
}

void AudioEngine::handleCompletion(std::int64_t generation)
{
    const auto state = m_appState.lock();
    if (generation != m_generation || m_transport != Transport::scheduled || !state)
        return;
    m_transport = Transport::ended;
    const TimeRange region = state->region();
    const bool repeats = state->holdEnabled() || (state->loopEnabled() && !region.isEmpty());
    const bool ends = hasPlayedAllPasses() || !repeats;
    if (ends)
        followUp(tailSeconds(), [this] { finishRegion(); });
    else if (const auto window = heldWindow())
        followUp(tailSeconds(), [this, window = *window] { repeat(window); });
    else
        followUp(tailSeconds(), [this, region, delay = loopDelay(*state)] { repeatRegion(region, delay); });
    if (ends)
        state->playbackDidEnd();
}

bool AudioEngine::hasPlayedAllPasses() { return m_passLimit && primaryPlayer().passesEnded() >= *m_passLimit; }

// The last frame has been handed over but not heard yet: nothing restarts before it is.
double AudioEngine::tailSeconds() const { return std::max(m_graph.presentationLatencySeconds(), minimumTailSeconds); }

void AudioEngine::followUp(double delaySeconds, std::function<void()> action)
{
    m_followUp = m_scheduler.after(delaySeconds, [this, generation = m_generation, action = std::move(action)] {
        if (generation == m_generation)
            action();
    });
}

void AudioEngine::finishRegion()
{
    m_positionTimer.cancel();
    // What was to follow may have begun while this thread was late.
    {
        const GraphChange atOnce(m_graph);
        forEachPlayer([](PlayerNode& player) { player.stop(); });
    }
    if (const auto state = m_appState.lock()) {
        state->setIsPlaying(false);
        state->setPlaybackPosition(state->region().start);
    }
}

void AudioEngine::repeatRegion(const TimeRange& region, double delaySeconds)
{
    m_positionTimer.cancel();
    if (const auto state = m_appState.lock())
        state->setPlaybackPosition(region.end);
    if (delaySeconds > 0)
        followUp(delaySeconds, [this, region] { repeat(region); });
    else
        repeat(region);
}

/// Plays the segment once more, unless the last of the wanted passes has ended meanwhile or there is nothing to play in it.
void AudioEngine::repeat(const TimeRange& segment)
{
    if (!hasPlayedAllPasses() && play(segment.start, segment.end))
        return;
    finishRegion();
    if (const auto state = m_appState.lock())
        state->playbackDidEnd();
}

std::optional<TimeRange> AudioEngine::heldWindow() const
{
    const auto state = m_appState.lock();
    if (!state || !state->holdEnabled())
        return std::nullopt;
    return TimeRange{ state->holdPosition(), state->holdPosition() + PlaybackState::holdWindowSeconds };
}

/// What follows a segment of `file`, as the state is now: the held window again and again, or the region after its pause, or
/// nothing.
PassPlan AudioEngine::planFor(const AudioFile& file) const
{
    const auto state = m_appState.lock();
    const auto window = heldWindow();
    if (!state || (!window && !state->loopEnabled()))
        return {};
    const TimeRange next = window.value_or(state->region());
    const auto frames = framesOf(next, file.sampleRate());
    if (!frames)
        return {};
    PlannedPass pass;
    pass.segment = *frames;
    pass.times = PlannedPass::endless;
    pass.held = window.has_value();
    pass.pauseSeconds = window ? 0 : std::max(0.0, loopDelay(*state));
    return { { pass }, m_passLimit };
}

void AudioEngine::nextSegmentDidChange()
{
    // What follows a segment that has ended is settled already.
    if (m_transport != Transport::scheduled)
        return;
    const AudioFile& file = isInStemMode() ? *m_stemNodes.front().file : *m_audioFile;
    primaryPlayer().setPlan(planFor(file));
}

// ---- Stems ----

void AudioEngine::enterStemMode(std::vector<StemFile> stems)
{
    exitStemMode();
    if (stems.empty())
        return;
    const GraphChange atOnce(m_graph);
    m_stemMixer = m_graph.makeMixer();
    m_graph.disconnectInput(m_graph.timePitch());
    m_graph.connect(*m_stemMixer, m_graph.timePitch());
    for (StemFile& stem : stems) {
        StemNode node{ std::move(stem.stem.key), m_graph.makePlayer(), m_graph.makeMixer(), std::move(stem.file) };
        m_graph.connect(*node.player, *node.mixer);
        m_graph.connect(*node.mixer, *m_stemMixer);
        node.mixer->setOutputVolume(stem.stem.isMuted ? 0 : 1);
        m_stemNodes.push_back(std::move(node));
    }
    m_transport = Transport::idle;
}

void AudioEngine::exitStemMode()
{
    if (!isInStemMode())
        return;
    {
        const GraphChange atOnce(m_graph);
        stop();
        m_stemNodes.clear();
        m_player->stop();
        connectMainPlayer();
    }
    if (const auto state = m_appState.lock()) {
        state->setIsPlaying(false);
        state->setPlaybackPosition(state->region().start);
    }
}

void AudioEngine::connectMainPlayer()
{
    m_stemMixer.reset();
    m_graph.connect(*m_player, m_graph.timePitch());
}

void AudioEngine::setStemVolume(std::string_view key, double volume)
{
    for (const StemNode& stem : m_stemNodes)
        if (stem.key == key)
            stem.mixer->setOutputVolume(volume);
}

}  // namespace quillet
