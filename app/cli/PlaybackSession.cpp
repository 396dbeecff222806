#include "app/cli/PlaybackSession.h"

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
      m_state(std::make_shared<AppState>(scheduler, m_settings, m_engine))
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
    m_engine.setAudioFile(std::move(*file));
    setUp(options, duration);
    return {};
}

void PlaybackSession::setUp(const PlaybackOptions& options, double durationSeconds)
{
    m_options = options;
    m_engine.setPassLimit(options.passes);
    m_state->setAudioDuration(durationSeconds);
    m_state->resetToDefaults(durationSeconds);
    m_state->setRegionStart(options.holdSeconds.value_or(options.fromSeconds));
    m_state->setRegionEnd(std::min(options.toSeconds.value_or(durationSeconds), durationSeconds));
    m_state->setSpeed(options.speedPercent);
    m_state->setPitch(options.pitchCents);
    m_state->setLoopEnabled(options.passes > 1);
    const auto delayMilliseconds = std::llround(options.delaySeconds * 1000);
    m_state->setLoopDelaySeconds(delayMilliseconds / 1000);
    m_state->setLoopDelayMilliseconds(delayMilliseconds % 1000);
    if (options.equalizerGainsDb)
        m_state->setEqGains({ options.equalizerGainsDb->begin(), options.equalizerGainsDb->end() });
    m_state->setEqEnabled(options.equalizerGainsDb.has_value());

    m_engine.timePitch().setRate(m_state->speed() / 100);
    m_engine.timePitch().setPitch(m_state->pitch());
    m_engine.timePitch().setKeepsFormants(options.keepsFormants);
    m_engine.eq().setBypass(!m_state->eqEnabled());
    for (int band = 0; band < EqualizerNode::bandCount; ++band)
        m_engine.setEQGain(m_state->eqGains()[static_cast<std::size_t>(band)], band);
}

void PlaybackSession::start(std::function<void()> finished)
{
    m_engine.onEnd(std::move(finished));
    if (m_options.holdSeconds)
        m_state->toggleHold();
    else
        m_state->togglePlayPause();
}

double PlaybackSession::playingSeconds() const
{
    const double length = m_options.holdSeconds ? AppState::holdWindowSize : m_state->regionEnd() - m_state->regionStart();
    return m_options.passes * length / (m_options.speedPercent / 100) + (m_options.passes - 1) * m_options.delaySeconds;
}

}  // namespace quillet
