#include "app/core/AppState.h"

#include "AppCore/PitchInputParser.h"
#include "AppCore/SpeedInputParser.h"

#include <algorithm>
#include <utility>

namespace quillet {

AppState::AppState(Scheduler& scheduler, const SettingsSaver::Stores& stores, AudioEngine& engine)
    : m_engine(engine),
      m_saver(scheduler, stores, *this),
      m_history(scheduler)
{
}

template <typename T, typename TellEngine>
void AppState::edit(T& field, T value, ChangeSignal changed, const TellEngine& tellEngine)
{
    if (assign(field, std::move(value), changed))
        tellEngine();
    settingsDidChange();
}

template <typename T, typename TellEngine>
void AppState::edit(EditKind kind, T& field, T value, ChangeSignal changed, const TellEngine& tellEngine)
{
    if (field != value)
        noteEdit(kind);
    edit(field, std::move(value), changed, tellEngine);
}

// ---- The open file ----

void AppState::beginOpening(FilePath url)
{
    saveSettingsNow();
    exitStemMode();
    setTrainerState(TrainerState::off, 0);
    leaveLoopList();
    assign(m_waitingLoop, {}, &AppState::waitingLoopChanged);
    setOfferedSettings(std::nullopt);
    m_history.clear();
    Q_EMIT historyChanged();
    setAudioFileURL(std::move(url));
    assign(m_sampleLevel, SampleLevel::usual, &AppState::sampleLevelChanged);
    assign(m_songTags, SongTags(), &AppState::songTagsChanged);
    setLoadingState(LoadingState::loading(""));
    // Nothing of the file before can be played under the new name.
    m_transport.stop();
    m_engine.setAudioFile(nullptr);
}

void AppState::finishOpening(OpenedFile file)
{
    const double duration = static_cast<double>(file.audio->length()) / file.audio->sampleRate();
    assign(m_sampleLevel, file.audio->level(), &AppState::sampleLevelChanged);
    assign(m_songTags, file.audio->tags(), &AppState::songTagsChanged);
    assign(m_isStereo, file.audio->channelCount() > 1, &AppState::isStereoChanged);
    m_engine.setAudioFile(std::move(file.audio));
    setAudioDuration(duration);
    resetToDefaults(duration);
    setPractice(std::make_shared<Practice>(std::move(file.practice)));
    if (file.settings)
        applySettings(*file.settings);
    if (!file.stemFiles.empty())
        enterStemMode(std::move(file.stems), std::move(file.stemFiles), std::move(file.stemMix));
    setWaveformSamples(std::move(file.peaks));
    setLoadingState(LoadingState::loaded());
    if (file.offeredSettings) {
        m_saver.keepAside(*file.offeredSettings);
        setOfferedSettings(std::move(file.offeredSettings));
    }
}

void AppState::failOpening()
{
    setLoadingState(LoadingState::idle());
    setAudioFileURL(std::nullopt);
}

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

void AppState::setRecentFiles(std::vector<FilePath> files)
{
    assign(m_recentFiles, std::move(files), &AppState::recentFilesChanged);
}

void AppState::setIsShowingHelp(bool isShowing) { assign(m_isShowingHelp, isShowing, &AppState::isShowingHelpChanged); }

// ---- Edits ----

void AppState::setRegion(TimeRange region)
{
    if (!m_isByItself && region != m_region)
        callOffLoops();
    edit(EditKind::region, m_region, region, &AppState::regionChanged, [this] { tellWhatFollows(); });
}

void AppState::setSpeed(double speedPercent)
{
    if (!m_isByItself && m_trainerState == TrainerState::on && speedPercent != m_speed)
        setTrainerState(TrainerState::paused, m_trainerPass);
    edit(EditKind::speed, m_speed, speedPercent, &AppState::speedChanged, [this] {
        m_engine.timePitch().setRate(m_speed / 100);
        if (m_listPlace)
            tellWhatFollows();
    });
}

void AppState::adjustSpeed(double byPercent)
{
    setSpeed(std::clamp(m_speed + byPercent, SpeedInputParser::min, SpeedInputParser::max));
}

void AppState::setSpeedStep(double stepPercent)
{
    edit(m_speedStep, stepPercent, &AppState::speedStepChanged, [] { });
}

void AppState::setPitch(double pitchCents)
{
    edit(EditKind::pitch, m_pitch, pitchCents, &AppState::pitchChanged, [this] {
        m_engine.timePitch().setPitch(m_pitch);
        if (m_listPlace)
            tellWhatFollows();
    });
}

void AppState::adjustPitch(double byCents)
{
    setPitch(std::clamp(m_pitch + byCents, PitchInputParser::min, PitchInputParser::max));
}

void AppState::setEqEnabled(bool enabled)
{
    edit(EditKind::equalizer, m_eqEnabled, enabled, &AppState::eqEnabledChanged,
         [this] { m_engine.eq().setBypass(!m_eqEnabled); });
}

void AppState::setEqGains(std::vector<double> gainsDb)
{
    edit(EditKind::equalizer, m_eqGains, std::move(gainsDb), &AppState::eqGainsChanged, [this] {
        for (std::size_t band = 0; band < m_eqGains.size(); ++band)
            m_engine.setEQGain(m_eqGains[band], static_cast<int>(band));
    });
}

void AppState::setEqGain(std::size_t band, double gainDb)
{
    auto gains = m_eqGains;
    gains.at(band) = gainDb;
    setEqGains(std::move(gains));
}

void AppState::setLoopEnabled(bool enabled)
{
    edit(m_loopEnabled, enabled, &AppState::loopEnabledChanged, [this] { tellWhatFollows(); });
}

void AppState::setLoopDelaySeconds(std::int64_t seconds)
{
    edit(m_loopDelaySeconds, seconds, &AppState::loopDelaySecondsChanged, [this] { tellWhatFollows(); });
}

void AppState::setLoopDelayMilliseconds(std::int64_t milliseconds)
{
    edit(m_loopDelayMilliseconds, milliseconds, &AppState::loopDelayMillisecondsChanged, [this] { tellWhatFollows(); });
}

// ---- Steps back and forth ----

/// What a song begins with is no edit.
void AppState::noteEdit(EditKind kind)
{
    if (m_isByItself || !isLoaded())
        return;
    m_history.note(kind, editedValues());
    Q_EMIT historyChanged();
}

void AppState::noteStep(EditKind kind)
{
    m_history.separate();
    noteEdit(kind);
    m_history.separate();
}

EditedValues AppState::editedValues() const
{
    EditedValues values{ m_region, m_speed, m_pitch, m_eqEnabled, m_eqGains, m_practice, {}, {} };
    if (!m_stemSession)
        return values;
    values.stemMix = m_stemMix;
    for (const StemSession::Stem& stem : m_stemSession->stems)
        values.mutes.emplace(stem.key, stem.isMuted);
    return values;
}

void AppState::undo() { goTo(m_history.undo(editedValues())); }

void AppState::redo() { goTo(m_history.redo(editedValues())); }

void AppState::goTo(const std::optional<EditedValues>& values)
{
    if (values) {
        m_isByItself = true;
        const bool isOtherRegion = values->region != m_region;
        if (isOtherRegion)
            callOffLoops();
        setRegion(values->region);
        setSpeed(values->speed);
        setPitch(values->pitch);
        setEqEnabled(values->eqEnabled);
        setEqGains(values->eqGains);
        editPractice(EditKind::loops, *values->practice);
        for (const auto& [key, isMuted] : values->mutes)
            if (const StemSession::Stem* present = stem(key); present != nullptr && present->isMuted != isMuted)
                setStemMuted(key, isMuted);
        // Before there were stems their mix was none.
        if (!values->mutes.empty())
            for (const std::string_view key : StemSession::keys)
                setStemChannel(key, values->stemMix.channel(key));
        m_isByItself = false;
        if (isOtherRegion)
            restartRegion();
    }
    Q_EMIT historyChanged();
}

void AppState::setZoomLevel(double zoomLevel) { assign(m_zoomLevel, zoomLevel, &AppState::zoomLevelChanged); }

void AppState::setPanOffset(double panOffset) { assign(m_panOffset, panOffset, &AppState::panOffsetChanged); }

// ---- Transport ----

void AppState::stopReset()
{
    m_transport.stopReset();
    assign(m_waitingLoop, {}, &AppState::waitingLoopChanged);
    rewindTrainer();
}

void AppState::playbackDidEnd()
{
    rewindTrainer();
    Q_EMIT playbackEnded();
}

void AppState::setIsPlaying(bool isPlaying) { assign(m_isPlaying, isPlaying, &AppState::isPlayingChanged); }

void AppState::setPlaybackPosition(double seconds) { assign(m_playbackPosition, seconds, &AppState::playbackPositionChanged); }

void AppState::setHoldEnabled(bool enabled)
{
    if (assign(m_holdEnabled, enabled, &AppState::holdEnabledChanged))
        tellWhatFollows();
}

void AppState::setHoldPosition(double seconds)
{
    if (assign(m_holdPosition, seconds, &AppState::holdPositionChanged))
        tellWhatFollows();
}

// ---- Stems ----

void AppState::enterStemMode(StemSession session, std::vector<StemFile> files, StemMix mix)
{
    m_transport.stopReset();
    m_engine.enterStemMode(std::move(files));
    assign(m_stemMix, std::move(mix), &AppState::stemMixChanged);
    setStemSession(std::move(session));
    tellStemVolumes();
}

void AppState::exitStemMode()
{
    if (!m_engine.isInStemMode())
        return;
    m_transport.stopReset();
    m_engine.exitStemMode();
    setStemSession(std::nullopt);
}

void AppState::setStemSession(std::optional<StemSession> session)
{
    assign(m_stemSession, std::move(session), &AppState::stemSessionChanged);
}

const StemSession::Stem* AppState::stem(std::string_view key) const
{
    if (!m_stemSession)
        return nullptr;
    const auto found = std::ranges::find(m_stemSession->stems, key, &StemSession::Stem::key);
    return found != m_stemSession->stems.end() ? &*found : nullptr;
}

/// What becomes of one may concern all others.
void AppState::tellStemVolumes()
{
    for (const StemSession::Stem& stem : m_stemSession->stems)
        m_engine.setStemVolume(stem.key, m_stemMix.heardVolume(stem, *m_stemSession));
}

void AppState::setStemMuted(std::string_view key, bool isMuted)
{
    const StemSession::Stem* present = stem(key);
    if (present == nullptr)
        return;
    if (present->isMuted != isMuted)
        noteEdit(EditKind::stems);
    StemSession session = *m_stemSession;
    session.setMuted(isMuted, key);
    setStemSession(std::move(session));
    tellStemVolumes();
    m_saver.saveStemSession();
}

void AppState::setStemVolume(std::string_view key, double volume)
{
    StemMix::Channel channel = m_stemMix.channel(key);
    channel.volume = std::clamp(volume, 0.0, StemMix::maxVolume);
    setStemChannel(key, channel);
}

void AppState::setStemSoloed(std::string_view key, bool isSoloed)
{
    StemMix::Channel channel = m_stemMix.channel(key);
    channel.isSoloed = isSoloed;
    setStemChannel(key, channel);
}

void AppState::setStemChannel(std::string_view key, StemMix::Channel channel)
{
    if (stem(key) == nullptr)
        return;
    StemMix mix = m_stemMix;
    mix.channels.erase(std::string(key));
    if (channel != StemMix::Channel())
        mix.channels.emplace(key, channel);
    if (mix != m_stemMix)
        noteEdit(EditKind::stems);
    if (!assign(m_stemMix, std::move(mix), &AppState::stemMixChanged))
        return;
    tellStemVolumes();
    m_saver.saveStemMixSoon();
}

// ---- Settings ----

void AppState::applySettings(const FileSettings& settings)
{
    setRegion({ settings.regionStart, settings.regionEnd });
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
    m_saver.adoptFile();
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
    setOfferedSettings(std::nullopt);
    m_saver.saveSoon();
}

void AppState::restoreOfferedSettings()
{
    if (!m_offeredSettings)
        return;
    applySettings(FileSettings(*m_offeredSettings));
    m_saver.forgetAside();
    restartRegion();
}

void AppState::dismissOfferedSettings()
{
    if (!m_offeredSettings)
        return;
    setOfferedSettings(std::nullopt);
    m_saver.forgetAside();
}

void AppState::setOfferedSettings(std::optional<FileSettings> settings)
{
    assign(m_offeredSettings, std::move(settings), &AppState::offeredSettingsChanged);
}

}  // namespace quillet
