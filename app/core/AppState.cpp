#include "app/core/AppState.h"

#include <algorithm>
#include <utility>

namespace quillet {

AppState::AppState(Scheduler& scheduler, SettingsStore& settingsStore, AudioEngine& engine)
    : m_scheduler(scheduler),
      m_settingsStore(settingsStore),
      m_engine(engine)
{
}

/// Stores the value and tells of it; both only if it differs, which is the answer.
template <typename T> bool AppState::assign(T& field, T value, ChangeSignal changed)
{
    if (field == value)
        return false;
    field = std::move(value);
    Q_EMIT(this->*changed)();
    return true;
}

// ---- Fields ----

void AppState::setLoadingState(LoadingState loadingState)
{
    assign(m_loadingState, std::move(loadingState), &AppState::loadingStateChanged);
}

void AppState::setAudioFileURL(std::optional<FilePath> url)
{
    assign(m_audioFileURL, std::move(url), &AppState::audioFileURLChanged);
}

void AppState::setAudioDuration(double durationSeconds)
{
    assign(m_audioDuration, durationSeconds, &AppState::audioDurationChanged);
}

void AppState::setWaveformSamples(std::vector<float> samples)
{
    assign(m_waveformSamples, std::move(samples), &AppState::waveformSamplesChanged);
}

void AppState::setRegionStart(double seconds)
{
    if (assign(m_regionStart, seconds, &AppState::regionStartChanged))
        m_engine.nextSegmentDidChange();
}

void AppState::setRegionEnd(double seconds)
{
    if (assign(m_regionEnd, seconds, &AppState::regionEndChanged))
        m_engine.nextSegmentDidChange();
}

void AppState::setIsPlaying(bool isPlaying) { assign(m_isPlaying, isPlaying, &AppState::isPlayingChanged); }

void AppState::setPlaybackPosition(double seconds) { assign(m_playbackPosition, seconds, &AppState::playbackPositionChanged); }

void AppState::setZoomLevel(double zoomLevel) { assign(m_zoomLevel, zoomLevel, &AppState::zoomLevelChanged); }

void AppState::setPanOffset(double panOffset) { assign(m_panOffset, panOffset, &AppState::panOffsetChanged); }

void AppState::setSpeed(double speedPercent)
{
    assign(m_speed, speedPercent, &AppState::speedChanged);
    settingsDidChange();
}

void AppState::setSpeedStep(double stepPercent)
{
    assign(m_speedStep, stepPercent, &AppState::speedStepChanged);
    settingsDidChange();
}

void AppState::setPitch(double pitchCents)
{
    assign(m_pitch, pitchCents, &AppState::pitchChanged);
    settingsDidChange();
}

void AppState::setEqEnabled(bool enabled)
{
    assign(m_eqEnabled, enabled, &AppState::eqEnabledChanged);
    settingsDidChange();
}

void AppState::setEqGains(std::vector<double> gainsDb)
{
    assign(m_eqGains, std::move(gainsDb), &AppState::eqGainsChanged);
    settingsDidChange();
}

void AppState::setLoopEnabled(bool enabled)
{
    if (assign(m_loopEnabled, enabled, &AppState::loopEnabledChanged))
        m_engine.nextSegmentDidChange();
    settingsDidChange();
}

void AppState::setLoopDelaySeconds(std::int64_t seconds)
{
    if (assign(m_loopDelaySeconds, seconds, &AppState::loopDelaySecondsChanged))
        m_engine.nextSegmentDidChange();
    settingsDidChange();
}

void AppState::setLoopDelayMilliseconds(std::int64_t milliseconds)
{
    if (assign(m_loopDelayMilliseconds, milliseconds, &AppState::loopDelayMillisecondsChanged))
        m_engine.nextSegmentDidChange();
    settingsDidChange();
}

void AppState::setHoldEnabled(bool enabled)
{
    if (assign(m_holdEnabled, enabled, &AppState::holdEnabledChanged))
        m_engine.nextSegmentDidChange();
}

void AppState::setHoldPosition(double seconds)
{
    if (assign(m_holdPosition, seconds, &AppState::holdPositionChanged))
        m_engine.nextSegmentDidChange();
}

void AppState::setRecentFiles(std::vector<FilePath> files)
{
    assign(m_recentFiles, std::move(files), &AppState::recentFilesChanged);
}

void AppState::setIsShowingHelp(bool isShowing) { assign(m_isShowingHelp, isShowing, &AppState::isShowingHelpChanged); }

void AppState::setStemSession(std::optional<StemSession> session)
{
    assign(m_stemSession, std::move(session), &AppState::stemSessionChanged);
}

// ---- Settings ----

FileSettings AppState::currentSettings() const
{
    return { m_regionStart, m_regionEnd, m_speed,       m_speedStep,        m_pitch,
             m_eqEnabled,   m_eqGains,   m_loopEnabled, m_loopDelaySeconds, m_loopDelayMilliseconds };
}

void AppState::applySettings(const FileSettings& settings)
{
    setRegionStart(settings.regionStart);
    setRegionEnd(settings.regionEnd);
    setSpeed(settings.speed);
    setSpeedStep(settings.speedStep);
    setPitch(settings.pitch);
    setEqEnabled(settings.eqEnabled);
    setEqGains(settings.eqGains);
    setLoopEnabled(settings.loopEnabled);
    setLoopDelaySeconds(settings.loopDelaySeconds);
    setLoopDelayMilliseconds(settings.loopDelayMilliseconds);
}

void AppState::resetToDefaults(double durationSeconds)
{
    m_settingsURL = m_audioFileURL;
    FileSettings defaults;
    defaults.regionEnd = durationSeconds;
    applySettings(defaults);
    setZoomLevel(1);
    setPanOffset(0);
    setPlaybackPosition(0);
    setIsPlaying(false);
    setHoldEnabled(false);
    setHoldPosition(0);
    setStemSession(std::nullopt);
}

void AppState::settingsDidChange()
{
    const bool belongToAnother = m_loadingState.stage == LoadingState::Stage::loading && m_settingsURL != m_audioFileURL;
    if (!m_audioFileURL || belongToAnother)
        return;
    m_settingsSaveTask = m_scheduler.after(settingsSaveDelaySeconds,
                                           [this, url = *m_audioFileURL] { m_settingsStore.save(currentSettings(), url); });
}

void AppState::saveSettingsNow()
{
    if (m_audioFileURL && m_loadingState.stage == LoadingState::Stage::loaded)
        m_settingsStore.save(currentSettings(), *m_audioFileURL);
}

// ---- Transport ----

void AppState::togglePlayPause()
{
    if (m_isPlaying) {
        m_engine.pause();
        setIsPlaying(false);
        return;
    }
    if (m_holdEnabled) {
        m_engine.play(m_holdPosition, m_holdPosition + holdWindowSize);
    } else {
        if (!(m_regionStart < m_regionEnd))
            return;
        setPlaybackPosition(m_regionStart);
        m_engine.play(m_regionStart, m_regionEnd);
    }
    setIsPlaying(true);
}

void AppState::toggleHold()
{
    if (m_holdEnabled) {
        assign(m_holdEnabled, false, &AppState::holdEnabledChanged);
        m_engine.stop();
        setIsPlaying(false);
        setPlaybackPosition(m_regionStart);
        return;
    }
    assign(m_holdEnabled, true, &AppState::holdEnabledChanged);
    const double anchor = m_isPlaying ? m_playbackPosition : m_regionStart;
    holdAt(std::max(0.0, std::min(m_audioDuration - holdWindowSize, anchor)));
    setIsPlaying(true);
}

void AppState::stepHoldForward()
{
    if (m_holdEnabled)
        holdAt(std::min(std::max(0.0, m_audioDuration - holdWindowSize), m_holdPosition + holdStepSize));
}

void AppState::stepHoldBackward()
{
    if (m_holdEnabled)
        holdAt(std::max(0.0, m_holdPosition - holdStepSize));
}

// Stores without the setter's word to the engine: the engine takes all of it from the `play` that follows.
void AppState::holdAt(double seconds)
{
    assign(m_holdPosition, seconds, &AppState::holdPositionChanged);
    m_engine.play(m_holdPosition, m_holdPosition + holdWindowSize);
}

}  // namespace quillet
