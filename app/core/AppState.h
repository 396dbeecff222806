// Everything the user sees and edits about the open file, and the operations on it that menus, keys and controls share. Each
// field has a signal that tells of its change. Values are taken as they are: limits are the business of the controls. It
// opens no file, and it tells the engine of values only where what follows without a gap depends on them; speed, pitch
// and equaliser are pushed by whoever sets them.
// Threads: main thread.
#pragma once

#include "AppCore/FileSettings.h"
#include "AppCore/SettingsStore.h"
#include "AppCore/StemSession.h"
#include "app/core/LoadingState.h"
#include "app/playback/AudioEngine.h"
#include "app/playback/PlaybackState.h"
#include "platform/base/FilePath.h"
#include "platform/schedule/Scheduler.h"

#include <QObject>

#include <cstdint>
#include <optional>
#include <vector>

namespace quillet {

class AppState final : public QObject, public PlaybackState {
    Q_OBJECT

public:
    static constexpr double holdWindowSize = holdWindowSeconds;
    /// How far one step moves the held window, seconds.
    static constexpr double holdStepSize = 0.08;
    static constexpr double settingsSaveDelaySeconds = 0.3;

    /// All three outlive the state. Lives in a shared_ptr, which the engine holds weakly.
    AppState(Scheduler& scheduler, SettingsStore& settingsStore, AudioEngine& engine);

    [[nodiscard]] const LoadingState& loadingState() const { return m_loadingState; }
    void setLoadingState(LoadingState loadingState);
    [[nodiscard]] const std::optional<FilePath>& audioFileURL() const { return m_audioFileURL; }
    void setAudioFileURL(std::optional<FilePath> url);
    /// Seconds.
    [[nodiscard]] double audioDuration() const { return m_audioDuration; }
    void setAudioDuration(double durationSeconds);
    /// Peaks for drawing, 0 to 1.
    [[nodiscard]] const std::vector<float>& waveformSamples() const { return m_waveformSamples; }
    void setWaveformSamples(std::vector<float> samples);

    /// The selected region, seconds. Setting it saves nothing: whoever edits it calls `settingsDidChange` afterwards.
    [[nodiscard]] double regionStart() const override { return m_regionStart; }
    void setRegionStart(double seconds);
    [[nodiscard]] double regionEnd() const override { return m_regionEnd; }
    void setRegionEnd(double seconds);
    [[nodiscard]] bool isPlaying() const { return m_isPlaying; }
    void setIsPlaying(bool isPlaying) override;
    /// The play head, seconds of file time.
    [[nodiscard]] double playbackPosition() const { return m_playbackPosition; }
    void setPlaybackPosition(double seconds) override;
    [[nodiscard]] double zoomLevel() const { return m_zoomLevel; }
    void setZoomLevel(double zoomLevel);
    [[nodiscard]] double panOffset() const { return m_panOffset; }
    void setPanOffset(double panOffset);

    // Setting any of the following eight saves the settings a moment later.

    /// Percent, 100 is normal.
    [[nodiscard]] double speed() const { return m_speed; }
    void setSpeed(double speedPercent);
    [[nodiscard]] double speedStep() const { return m_speedStep; }
    void setSpeedStep(double stepPercent);
    [[nodiscard]] double pitch() const { return m_pitch; }
    void setPitch(double pitchCents);
    [[nodiscard]] bool eqEnabled() const { return m_eqEnabled; }
    void setEqEnabled(bool enabled);
    /// dB, the lowest band first.
    [[nodiscard]] const std::vector<double>& eqGains() const { return m_eqGains; }
    void setEqGains(std::vector<double> gainsDb);
    [[nodiscard]] bool loopEnabled() const override { return m_loopEnabled; }
    void setLoopEnabled(bool enabled);
    [[nodiscard]] std::int64_t loopDelaySeconds() const override { return m_loopDelaySeconds; }
    void setLoopDelaySeconds(std::int64_t seconds);
    [[nodiscard]] std::int64_t loopDelayMilliseconds() const override { return m_loopDelayMilliseconds; }
    void setLoopDelayMilliseconds(std::int64_t milliseconds);

    [[nodiscard]] bool holdEnabled() const override { return m_holdEnabled; }
    void setHoldEnabled(bool enabled);
    /// Start of the held window, seconds.
    [[nodiscard]] double holdPosition() const override { return m_holdPosition; }
    void setHoldPosition(double seconds);
    /// The most recent first.
    [[nodiscard]] const std::vector<FilePath>& recentFiles() const { return m_recentFiles; }
    void setRecentFiles(std::vector<FilePath> files);
    [[nodiscard]] bool isShowingHelp() const { return m_isShowingHelp; }
    void setIsShowingHelp(bool isShowing);
    [[nodiscard]] const std::optional<StemSession>& stemSession() const { return m_stemSession; }
    void setStemSession(std::optional<StemSession> session);

    /// The ten fields that are kept for each file.
    [[nodiscard]] FileSettings currentSettings() const;
    void applySettings(const FileSettings& settings);
    /// What a file of this length (seconds) starts with; transport stopped, hold off, no stems. The engine is not told.
    void resetToDefaults(double durationSeconds);
    /// Saves the settings that are current `settingsSaveDelaySeconds` after the last call, for the file that is open now.
    /// Does nothing without a file, nor while one is being opened whose settings these are not yet.
    void settingsDidChange();
    /// Saves them at once if a file is loaded.
    void saveSettingsNow();

    /// Always starts at the region's start, or the held window's; an empty region does not play.
    void togglePlayPause();
    /// Holds the play head's place (the region's start when nothing plays), or lets go and stops.
    void toggleHold();
    /// Moves the held window within the file and sounds it; does nothing outside hold.
    void stepHoldForward();
    void stepHoldBackward();

Q_SIGNALS:
    void loadingStateChanged();
    void audioFileURLChanged();
    void audioDurationChanged();
    void waveformSamplesChanged();
    void regionStartChanged();
    void regionEndChanged();
    void isPlayingChanged();
    void playbackPositionChanged();
    void zoomLevelChanged();
    void panOffsetChanged();
    void speedChanged();
    void speedStepChanged();
    void pitchChanged();
    void eqEnabledChanged();
    void eqGainsChanged();
    void loopEnabledChanged();
    void loopDelaySecondsChanged();
    void loopDelayMillisecondsChanged();
    void holdEnabledChanged();
    void holdPositionChanged();
    void recentFilesChanged();
    void isShowingHelpChanged();
    void stemSessionChanged();

private:
    using ChangeSignal = void (AppState::*)();

    template <typename T> bool assign(T& field, T value, ChangeSignal changed);
    void holdAt(double seconds);

    Scheduler& m_scheduler;
    SettingsStore& m_settingsStore;
    AudioEngine& m_engine;

    LoadingState m_loadingState;
    std::optional<FilePath> m_audioFileURL;
    double m_audioDuration = 0;
    std::vector<float> m_waveformSamples;
    double m_regionStart = 0;
    double m_regionEnd = 0;
    bool m_isPlaying = false;
    double m_playbackPosition = 0;
    double m_zoomLevel = 1;
    double m_panOffset = 0;
    double m_speed = 100;
    double m_speedStep = 5;
    double m_pitch = 0;
    bool m_eqEnabled = false;
    std::vector<double> m_eqGains = std::vector<double>(EqualizerNode::bandCount, 0.0);
    // Looping is what a practice tool is for, so it is on from the start.
    bool m_loopEnabled = true;
    std::int64_t m_loopDelaySeconds = 0;
    std::int64_t m_loopDelayMilliseconds = 0;
    bool m_holdEnabled = false;
    double m_holdPosition = 0;
    std::vector<FilePath> m_recentFiles;
    bool m_isShowingHelp = false;
    std::optional<StemSession> m_stemSession;
    ScheduledTask m_settingsSaveTask;
    /// The file that was last reset for: while another one is being opened, the settings are still its.
    std::optional<FilePath> m_settingsURL;
};

}  // namespace quillet
