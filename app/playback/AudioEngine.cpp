#include "app/playback/AudioEngine.h"

#include "AppCore/SharedInstance.h"
#include "platform/base/Require.h"

#include <algorithm>
#include <cmath>
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
    const bool plays = isInStemMode() ? playStems(segment) : playFile(segment);
    // Of a sound that goes on, since it was planned.
    m_passesSeen = plays ? primaryPlayer().passesEnded() : 0;
    return plays;
}

bool AudioEngine::playFile(const TimeRange& segment)
{
    if (!m_audioFile)
        return false;
    const GraphChange atOnce(m_graph);
    stop();
    if (!hasSound(*m_audioFile, framesOf(segment, m_audioFile->sampleRate())))
        return false;
    beginGeneration(segment);
    schedule(*m_player, m_audioFile, segment, completionHandler());
    nextSegmentDidChange();
    m_player->play();
    startPositionTimer();
    return true;
}

bool AudioEngine::playStems(const TimeRange& segment)
{
    const GraphChange atOnce(m_graph);
    stop();
    const auto sounds = [&segment](const StemNode& stem) {
        return hasSound(*stem.file, framesOf(segment, stem.file->sampleRate()));
    };
    StemNode& first = m_stemNodes.front();
    if (!framesOf(segment, first.file->sampleRate()) || std::ranges::none_of(m_stemNodes, sounds))
        return false;
    beginGeneration(segment);
    for (StemNode& stem : m_stemNodes)
        schedule(*stem.player, stem.file, segment, &stem == &first ? completionHandler() : nullptr);
    nextSegmentDidChange();
    forEachPlayer([](PlayerNode& player) { player.play(); });
    startPositionTimer();
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

const AudioFile& AudioEngine::primaryFile() const { return isInStemMode() ? *m_stemNodes.front().file : *m_audioFile; }

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

void AudioEngine::beginGeneration(const TimeRange& segment)
{
    advanceGeneration();
    m_segment = segment;
    m_transport = Transport::scheduled;
    if (!m_graph.isRunning())
        m_graph.start();
}

void AudioEngine::moveEnd(double toSeconds)
{
    if (m_transport != Transport::scheduled || heldWindow() == m_segment)
        return;
    const TimeRange segment{ m_segment.start, toSeconds };
    const auto frames = framesOf(segment, primaryFile().sampleRate());
    const GraphChange atOnce(m_graph);
    if (!frames || !primaryPlayer().moveEnd(frames->count))
        return;
    m_segment = segment;
    // Where it ends is the first one's business; the others go along.
    for (StemNode& stem : m_stemNodes)
        if (const auto moved = framesOf(segment, stem.file->sampleRate()))
            stem.player->moveEnd(moved->count);
}

// ---- Where it is ----

/// Where the scheduled segment is heard, as if it went on for ever.
std::optional<double> AudioEngine::reachedSeconds()
{
    if (m_transport == Transport::idle)
        return std::nullopt;
    const auto sampleTime = primaryPlayer().sampleTime();
    if (!sampleTime)
        return std::nullopt;
    return m_segment.start + *sampleTime / primaryFile().sampleRate();
}

std::optional<double> AudioEngine::heardSeconds()
{
    const auto reached = reachedSeconds();
    const auto state = m_appState.lock();
    if (!reached || !state || *reached < m_segment.end)
        return reached;
    // The next pass has begun, and this thread has not been told yet.
    const auto upcoming = state->upcomingPasses();
    if (upcoming.empty())
        return m_segment.end;
    const TimeRange next = upcoming.front().segment;
    return next.start + std::fmod(*reached - m_segment.end, next.end - next.start);
}

void AudioEngine::startPositionTimer()
{
    m_positionTimer = m_scheduler.every(positionIntervalSeconds, [this] {
        const auto state = m_appState.lock();
        const auto reached = reachedSeconds();
        if (!state || !reached)
            return;
        const double limit =
            state->holdEnabled() ? state->holdPosition() + PlaybackState::holdWindowSeconds : state->region().end;
        state->setPlaybackPosition(std::min(*reached, limit));
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
    m_upcoming = state->upcomingPasses();
    const bool ends = hasPlayedAllPasses() || m_upcoming.empty();
    if (ends)
        followUp(tailSeconds(), [this] { finishRegion(); });
    else if (m_upcoming.front().isHeld)
        followUp(tailSeconds(), [this] { playNextPass(); });
    else
        followUp(tailSeconds(), [this, end = state->region().end, delay = loopDelay(*state)] { awaitNextPass(end, delay); });
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

void AudioEngine::awaitNextPass(double regionEnd, double delaySeconds)
{
    m_positionTimer.cancel();
    if (const auto state = m_appState.lock())
        state->setPlaybackPosition(regionEnd);
    if (delaySeconds > 0)
        followUp(delaySeconds, [this] { playNextPass(); });
    else
        playNextPass();
}

/// Plays the pass that sounds by now, unless the last of the wanted ones has ended meanwhile or there is nothing to play in it.
void AudioEngine::playNextPass()
{
    std::int64_t behind = std::max<std::int64_t>(0, primaryPlayer().passesEnded() - m_passesSeen - 1);
    auto next = m_upcoming.begin();
    for (; next != m_upcoming.end() && behind >= next->times; ++next)
        behind -= next->times;
    const auto state = m_appState.lock();
    if (next != m_upcoming.end() && !hasPlayedAllPasses()) {
        const TimeRange segment = next->segment;
        const bool isElsewhere = segment != m_segment;
        if (state)
            state->passBegins(*next, behind);
        if (state && isElsewhere)
            state->setPlaybackPosition(segment.start);
        if (play(segment.start, segment.end))
            return;
    }
    finishRegion();
    if (state)
        state->playbackDidEnd();
}

std::optional<TimeRange> AudioEngine::heldWindow() const
{
    const auto state = m_appState.lock();
    if (!state || !state->holdEnabled())
        return std::nullopt;
    return TimeRange{ state->holdPosition(), state->holdPosition() + PlaybackState::holdWindowSeconds };
}

/// What follows a segment of `file`, as the state is now.
PassPlan AudioEngine::planFor(const AudioFile& file) const
{
    PassPlan plan;
    const auto state = m_appState.lock();
    if (!state)
        return plan;
    const double pause = std::max(0.0, loopDelay(*state));
    for (const UpcomingPass& pass : state->upcomingPasses()) {
        const auto frames = framesOf(pass.segment, file.sampleRate());
        if (!frames)
            break;
        plan.passes.push_back({ .segment = *frames,
                                .pauseSeconds = pass.isHeld ? 0 : pause,
                                .rate = pass.speed ? std::optional(*pass.speed / 100) : std::nullopt,
                                .pitchCents = pass.pitch,
                                .held = pass.isHeld,
                                .times = pass.times });
    }
    if (!plan.passes.empty())
        plan.passLimit = m_passLimit;
    return plan;
}

void AudioEngine::nextSegmentDidChange()
{
    // What follows a segment that has ended is settled already.
    if (m_transport != Transport::scheduled)
        return;
    primaryPlayer().setPlan(planFor(primaryFile()));
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
