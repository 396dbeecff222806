#include "app/export/PlaybackSession.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace quillet {
namespace {

std::string seconds(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.3f s", value);
    return text;
}

}  // namespace

PlaybackSession::PlaybackSession(AudioGraph& graph, AudioFileOpener& opener, Scheduler& scheduler)
    : m_opener(opener),
      m_engine(graph, scheduler),
      m_state(std::make_shared<AppState>(
          scheduler, SettingsSaver::Stores{ m_settings, m_stemSessions, m_stemMixes, m_practices }, m_engine))
{
    m_engine.setAppState(m_state);
}

std::expected<void, std::string> PlaybackSession::open(const PlaybackOptions& options)
{
    auto file = m_opener.open(options.input);
    if (!file)
        return std::unexpected(describe(file.error(), options.input));
    const double duration = static_cast<double>((*file)->length()) / (*file)->sampleRate();
    const double begin = options.holdSeconds.value_or(options.fromSeconds);
    if (begin >= duration)
        return std::unexpected(seconds(begin) + " is past the end of “" + displayText(options.input) + "”, which is "
                               + seconds(duration) + " long.");
    const double end = options.holdSeconds ? begin + AppState::holdWindowSize : options.toSeconds.value_or(duration);
    const auto frame = [rate = (*file)->sampleRate()](double time) { return static_cast<std::int64_t>(time * rate); };
    if (frame(std::min(end, duration)) <= frame(begin) && !options.holdSeconds)
        return std::unexpected("Between " + seconds(begin) + " and " + seconds(end) + " there is not a single sample of “"
                               + displayText(options.input) + "”; choose a longer region.");
    m_file = std::move(*file);
    AppState::OpenedFile opened;
    opened.audio = m_file;
    m_state->finishOpening(std::move(opened));
    if (auto mixed = enterStemMode(options); !mixed)
        return mixed;
    setUp(options);
    return {};
}

std::expected<void, std::string> PlaybackSession::enterStemMode(const PlaybackOptions& options)
{
    if (!options.stemVolumes)
        return {};
    const StemSession session = StemSession::fromSeparation(options.stems);
    auto files = openStemFiles(m_opener, session.stems);
    if (files.size() < session.stems.size())
        return std::unexpected("Not all stems of “" + displayText(options.input) + "” can be read; separate the song again.");
    StemMix mix;
    for (const auto& [key, volume] : *options.stemVolumes)
        mix.channels[key].volume = volume;
    m_state->enterStemMode(session, std::move(files), std::move(mix));
    return {};
}

void PlaybackSession::setUp(const PlaybackOptions& options)
{
    m_options = options;
    const double duration = m_state->audioDuration();
    m_state->setPassLimit(options.passes);
    m_state->setRegion(
        { options.holdSeconds.value_or(options.fromSeconds), std::min(options.toSeconds.value_or(duration), duration) });
    m_state->setSpeed(options.speedPercent);
    m_state->setPitch(options.pitchCents);
    m_state->setChannels(options.channels);
    m_state->setKeepsFormants(options.keepsFormants);
    m_state->setLoopEnabled(options.passes > 1);
    const auto delayMilliseconds = std::llround(options.delaySeconds * 1000);
    m_state->setLoopDelaySeconds(delayMilliseconds / 1000);
    m_state->setLoopDelayMilliseconds(delayMilliseconds % 1000);
    if (options.equalizerGainsDb)
        m_state->setEqGains({ options.equalizerGainsDb->begin(), options.equalizerGainsDb->end() });
    m_state->setEqEnabled(options.equalizerGainsDb.has_value());
    if (!options.loops.empty()) {
        std::int64_t times = 0;
        for (const NamedLoop& loop : options.loops)
            times += loop.times;
        m_state->setPassLimit(times * options.passes);
        m_state->setLoops(options.loops);
    }
}

void PlaybackSession::start(const std::function<void()>& finished)
{
    QObject::connect(m_state.get(), &AppState::playbackEnded, m_state.get(), finished);
    if (m_options.holdSeconds)
        m_state->toggleHold();
    else if (!m_options.loops.empty())
        m_state->playLoopList();
    else
        m_state->togglePlayPause();
}

double PlaybackSession::playingSeconds() const
{
    double listSeconds = 0;
    for (const NamedLoop& loop : m_options.loops)
        listSeconds += static_cast<double>(loop.times)
            * ((loop.region.end - loop.region.start) / (loop.speed / 100) + m_options.delaySeconds);
    if (!m_options.loops.empty())
        return m_options.passes * listSeconds - m_options.delaySeconds;
    const TimeRange region = m_state->region();
    const double length = m_options.holdSeconds ? AppState::holdWindowSize : region.end - region.start;
    return m_options.passes * length / (m_options.speedPercent / 100) + (m_options.passes - 1) * m_options.delaySeconds;
}

}  // namespace quillet
