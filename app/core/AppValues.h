// The values of the open song, and of the program, that views show: each with a signal that tells of its change. They are read
// by everyone and changed by AppState and its parts alone, which see to what a change means.
// Threads: main thread.
#pragma once

#include "AppCore/FileSettings.h"
#include "AppCore/Practice.h"
#include "AppCore/StemMix.h"
#include "AppCore/StemSession.h"
#include "AppCore/TimeRange.h"
#include "app/core/LoadingState.h"
#include "app/playback/PlaybackState.h"
#include "platform/base/FilePath.h"
#include "platform/media/AudioFile.h"

#include <QObject>

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace quillet {

/// `paused`: something was changed by hand, and stays as it is.
enum class TrainerState { off, on, paused };

/// A pass of a loop of the list, both counted from 0.
struct ListPlace {
    std::size_t loop = 0;
    std::int64_t pass = 0;

    bool operator==(const ListPlace&) const = default;
};

class AppValues : public QObject, public PlaybackState {
    Q_OBJECT

public:
    static constexpr double holdWindowSize = holdWindowSeconds;
    /// How far one step moves the held window, seconds.
    static constexpr double holdStepSize = 0.08;

    [[nodiscard]] const LoadingState& loadingState() const { return m_loadingState; }
    [[nodiscard]] bool isLoaded() const { return m_loadingState.stage == LoadingState::Stage::loaded; }
    [[nodiscard]] const std::optional<FilePath>& audioFileURL() const { return m_audioFileURL; }
    /// Seconds.
    [[nodiscard]] double audioDuration() const { return m_audioDuration; }
    [[nodiscard]] SampleLevel sampleLevel() const { return m_sampleLevel; }
    /// What the open file says of its song.
    [[nodiscard]] const SongTags& songTags() const { return m_songTags; }
    /// Peaks for drawing, 0 to 1.
    [[nodiscard]] const std::vector<float>& waveformSamples() const { return m_waveformSamples; }

    /// What is selected to be played, seconds.
    [[nodiscard]] TimeRange region() const override { return m_region; }
    [[nodiscard]] double regionStart() const { return m_region.start; }
    [[nodiscard]] double regionEnd() const { return m_region.end; }
    [[nodiscard]] bool isPlaying() const { return m_isPlaying; }
    /// The play head, seconds of file time.
    [[nodiscard]] double playbackPosition() const { return m_playbackPosition; }
    [[nodiscard]] double zoomLevel() const { return m_zoomLevel; }
    /// Points.
    [[nodiscard]] double panOffset() const { return m_panOffset; }

    /// Percent, 100 is normal.
    [[nodiscard]] double speed() const { return m_speed; }
    [[nodiscard]] double speedStep() const { return m_speedStep; }
    /// Cents.
    [[nodiscard]] double pitch() const { return m_pitch; }
    [[nodiscard]] bool eqEnabled() const { return m_eqEnabled; }
    /// dB, the lowest band first.
    [[nodiscard]] const std::vector<double>& eqGains() const { return m_eqGains; }
    [[nodiscard]] bool loopEnabled() const override { return m_loopEnabled; }
    [[nodiscard]] std::int64_t loopDelaySeconds() const override { return m_loopDelaySeconds; }
    [[nodiscard]] std::int64_t loopDelayMilliseconds() const override { return m_loopDelayMilliseconds; }

    [[nodiscard]] bool holdEnabled() const override { return m_holdEnabled; }
    /// Start of the held window, seconds.
    [[nodiscard]] double holdPosition() const override { return m_holdPosition; }
    /// The most recent first.
    [[nodiscard]] const std::vector<FilePath>& recentFiles() const { return m_recentFiles; }
    [[nodiscard]] bool isShowingHelp() const { return m_isShowingHelp; }
    [[nodiscard]] const std::optional<StemSession>& stemSession() const { return m_stemSession; }
    [[nodiscard]] const StemMix& stemMix() const { return m_stemMix; }
    /// What is kept for the song beyond its settings.
    [[nodiscard]] const Practice& practice() const { return *m_practice; }
    /// Which channels are heard.
    [[nodiscard]] ChannelMode channels() const { return m_practice->channels; }
    /// The speeds that passes are played at, one after the other, while it is on.
    [[nodiscard]] const Trainer& trainer() const { return m_practice->trainer; }
    [[nodiscard]] TrainerState trainerState() const { return m_trainerState; }
    /// The trainer's pass that plays, counted from 0.
    [[nodiscard]] std::int64_t trainerPass() const { return m_trainerPass; }
    [[nodiscard]] const std::vector<NamedLoop>& loops() const { return m_practice->loops; }
    /// The saved loop that the region is, if it is one.
    [[nodiscard]] std::optional<std::size_t> presentLoop() const;
    /// The saved loop that was called up and begins when the present pass has ended.
    [[nodiscard]] std::optional<std::size_t> waitingLoop() const { return m_waitingLoop; }
    /// Whether the loops are played one after the other, and if so which is.
    [[nodiscard]] const std::optional<ListPlace>& listPlace() const { return m_listPlace; }

    [[nodiscard]] std::vector<UpcomingPass> upcomingPasses() const override;
    /// Whether the song has two of them.
    [[nodiscard]] bool isStereo() const { return m_isStereo; }
    /// What the song was practised with before, while the user may still go back to it.
    [[nodiscard]] const std::optional<FileSettings>& offeredSettings() const { return m_offeredSettings; }

    /// The ten fields that are kept for each file.
    [[nodiscard]] FileSettings currentSettings() const;

Q_SIGNALS:
    void loadingStateChanged();
    void audioFileURLChanged();
    void audioDurationChanged();
    void sampleLevelChanged();
    void songTagsChanged();
    void waveformSamplesChanged();
    void regionChanged();
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
    void stemMixChanged();
    void channelsChanged();
    void isStereoChanged();
    void trainerChanged();
    void trainerStateChanged();
    void trainerPassChanged();
    void loopsChanged();
    /// The region has just been kept as that loop.
    void loopSaved(std::size_t loop);
    void waitingLoopChanged();
    void listPlaceChanged();
    void offeredSettingsChanged();
    /// What can be undone, or done again.
    void historyChanged();
    /// The last segment has been handed to the device to its last frame, and nothing follows it.
    void playbackEnded();

protected:
    /// Moves the values that playing changes by itself.
    friend class Transport;

    using ChangeSignal = void (AppValues::*)();

    AppValues();

    /// Stores the value and tells of it; both only if it differs, which is the answer.
    template <typename T> bool assign(T& field, T value, ChangeSignal changed)
    {
        if (field == value)
            return false;
        field = std::move(value);
        Q_EMIT(this->*changed)();
        return true;
    }

    LoadingState m_loadingState;
    std::optional<FilePath> m_audioFileURL;
    double m_audioDuration = 0;
    SampleLevel m_sampleLevel = SampleLevel::usual;
    SongTags m_songTags;
    std::vector<float> m_waveformSamples;
    TimeRange m_region;
    bool m_isPlaying = false;
    double m_playbackPosition = 0;
    double m_zoomLevel = 1;
    double m_panOffset = 0;
    double m_speed = 100;
    double m_speedStep = 5;
    double m_pitch = 0;
    bool m_eqEnabled = false;
    std::vector<double> m_eqGains;
    // Looping is what a practice tool is for, so it is on from the start.
    bool m_loopEnabled = true;
    std::int64_t m_loopDelaySeconds = 0;
    std::int64_t m_loopDelayMilliseconds = 0;
    bool m_holdEnabled = false;
    double m_holdPosition = 0;
    std::vector<FilePath> m_recentFiles;
    bool m_isShowingHelp = false;
    std::optional<StemSession> m_stemSession;
    StemMix m_stemMix;
    /// Never null.
    std::shared_ptr<const Practice> m_practice = std::make_shared<Practice>();
    bool m_isStereo = true;
    TrainerState m_trainerState = TrainerState::off;
    std::int64_t m_trainerPass = 0;
    std::optional<std::size_t> m_waitingLoop;
    std::optional<ListPlace> m_listPlace;
    std::optional<FileSettings> m_offeredSettings;
};

}  // namespace quillet
