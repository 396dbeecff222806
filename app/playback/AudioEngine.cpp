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

/// The frames from `fromSeconds` to `toSeconds`; nothing when there are none or they begin before the file's start.
std::optional<FrameRange> framesOf(double fromSeconds, double toSeconds, int sampleRate)
{
    const std::int64_t start = frameAt(fromSeconds, sampleRate);
    const std::int64_t end = frameAt(toSeconds, sampleRate);
    if (start < 0 || end <= start)
        return std::nullopt;
    return FrameRange{ start, end - start };
}

std::optional<FrameRange> within(const AudioFile& file, std::optional<FrameRange> frames)
{
    return frames && frames->start < file.length() ? frames : std::nullopt;
}

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

void AudioEngine::play(double fromSeconds, double toSeconds)
{
    if (!(fromSeconds < toSeconds))
        return;
    if (isInStemMode()) {
        playStemMode({ fromSeconds, toSeconds });
        return;
    }
    if (!m_audioFile)
        return;
    const GraphChange atOnce(m_graph);
    stop();
    const int sampleRate = m_audioFile->sampleRate();
    const auto frames = within(*m_audioFile, framesOf(fromSeconds, toSeconds, sampleRate));
    if (!frames)
        return;
    beginGeneration();
    m_player->scheduleSegment(m_audioFile, *frames, completionHandler());
    nextSegmentDidChange();
    m_player->play();
    startPositionTimer(fromSeconds, *m_player, sampleRate);
}

void AudioEngine::playStemMode(Segment segment)
{
    const GraphChange atOnce(m_graph);
    stop();
    StemNode& first = m_stemNodes.front();
    const int sampleRate = first.file->sampleRate();
    const auto frames = framesOf(segment.fromSeconds, segment.toSeconds, sampleRate);
    if (!within(*first.file, frames))
        return;
    beginGeneration();
    for (StemNode& stem : m_stemNodes)
        if (within(*stem.file, frames))
            stem.player->scheduleSegment(stem.file, *frames, &stem == &first ? completionHandler() : nullptr);
    nextSegmentDidChange();
    forEachPlayer([](PlayerNode& player) { player.play(); });
    startPositionTimer(segment.fromSeconds, *first.player, sampleRate);
}

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
            state->holdEnabled() ? state->holdPosition() + PlaybackState::holdWindowSeconds : state->regionEnd();
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
    const double start = state->holdEnabled() ? state->holdPosition() : state->regionStart();
    if (state->holdEnabled())
        followUp(tailSeconds(), [this, start] { play(start, start + PlaybackState::holdWindowSeconds); });
    else if (!state->loopEnabled())
        followUp(tailSeconds(), [this] { finishRegion(); });
    else
        followUp(tailSeconds(), [this, region = Segment{ start, state->regionEnd() }, delay = loopDelay(*state)] {
            repeatRegion(region, delay);
        });
    if (m_segmentEnded)
        m_segmentEnded();
}

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
    if (const auto state = m_appState.lock()) {
        state->setIsPlaying(false);
        state->setPlaybackPosition(state->regionStart());
    }
}

void AudioEngine::repeatRegion(Segment region, double delaySeconds)
{
    m_positionTimer.cancel();
    if (const auto state = m_appState.lock())
        state->setPlaybackPosition(region.toSeconds);
    if (delaySeconds > 0)
        followUp(delaySeconds, [this, region] { play(region.fromSeconds, region.toSeconds); });
    else
        play(region.fromSeconds, region.toSeconds);
}

std::optional<AudioEngine::Segment> AudioEngine::nextSegment() const
{
    const auto state = m_appState.lock();
    if (!state)
        return std::nullopt;
    if (state->holdEnabled())
        return Segment{ state->holdPosition(), state->holdPosition() + PlaybackState::holdWindowSeconds };
    if (state->loopEnabled() && loopDelay(*state) <= 0)
        return Segment{ state->regionStart(), state->regionEnd() };
    return std::nullopt;
}

void AudioEngine::nextSegmentDidChange()
{
    // What follows a segment that has ended is settled already.
    if (m_transport != Transport::scheduled)
        return;
    const GraphChange atOnce(m_graph);
    const auto next = nextSegment();
    const auto framesIn = [&](const AudioFile& file, int sampleRate) {
        return next ? within(file, framesOf(next->fromSeconds, next->toSeconds, sampleRate)) : std::nullopt;
    };
    if (!isInStemMode())
        m_player->hintNextSegment(framesIn(*m_audioFile, m_audioFile->sampleRate()));
    for (const StemNode& stem : m_stemNodes)
        stem.player->hintNextSegment(framesIn(*stem.file, m_stemNodes.front().file->sampleRate()));
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
        m_graph.connect(*node.player, *node.gain);
        m_graph.connect(*node.gain, *m_stemMixer);
        node.gain->setOutputVolume(stem.stem.isMuted ? 0 : 1);
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
        state->setPlaybackPosition(state->regionStart());
    }
}

void AudioEngine::connectMainPlayer()
{
    m_stemMixer.reset();
    m_graph.connect(*m_player, m_graph.timePitch());
}

void AudioEngine::setStemMuted(std::string_view key, bool isMuted)
{
    for (StemNode& stem : m_stemNodes)
        if (stem.key == key)
            stem.gain->setOutputVolume(isMuted ? 0 : 1);
}

}  // namespace quillet
