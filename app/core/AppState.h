// What everyone reads and edits: views, keys, menus, the loader, the command line. Every edit takes one road, here: the value
// and its signal, then the engine, then the saving a moment later. Values are taken as they are, except where a function says
// that it keeps to the limits. It opens no file and shows nothing.
// Threads: main thread.
#pragma once

#include "AppCore/SettingsStore.h"
#include "app/core/AppValues.h"
#include "app/core/EditHistory.h"
#include "app/core/SettingsSaver.h"
#include "app/core/Transport.h"
#include "app/playback/AudioEngine.h"
#include "platform/schedule/Scheduler.h"

#include <memory>
#include <optional>
#include <vector>

namespace quillet {

class AppState final : public AppValues {
    Q_OBJECT

public:
    static constexpr double settingsSaveDelaySeconds = SettingsSaver::delaySeconds;

    /// A file that has been read, with all that belongs to it.
    struct OpenedFile {
        std::shared_ptr<AudioFile> audio;
        std::vector<float> peaks;
        /// What it starts with; nothing: the defaults.
        std::optional<FileSettings> settings = std::nullopt;
        /// What the user is offered in their place.
        std::optional<FileSettings> offeredSettings = std::nullopt;
        /// Empty where the file has no stems.
        StemSession stems = {};
        std::vector<StemFile> stemFiles = {};
        StemMix stemMix = {};
        Practice practice = {};
    };

    /// All outlive the state. It lives in a shared_ptr, which the engine holds weakly.
    AppState(Scheduler& scheduler, const SettingsSaver::Stores& stores, AudioEngine& engine);

    // ---- The open file ----

    /// Makes way for `url`, which is being read from now on: saves the settings of the file before and ends its sound.
    void beginOpening(FilePath url);
    /// The file that was made way for is there.
    void finishOpening(OpenedFile file);
    /// It cannot be opened: none is open.
    void failOpening();

    void setLoadingState(LoadingState loadingState);
    void setAudioFileURL(std::optional<FilePath> url);
    void setAudioDuration(double durationSeconds);
    void setWaveformSamples(std::vector<float> samples);
    void setRecentFiles(std::vector<FilePath> files);
    void setIsShowingHelp(bool isShowing);

    // ---- Edits ----

    /// Sets both ends in one step. What plays goes on, and what follows it is the new region; `restartRegion` ends an edit.
    void setRegion(TimeRange region);
    /// Plays the region from its start, if a region plays.
    void restartRegion() { m_transport.restartRegion(); }
    /// Lets what plays go on to the region's end without a break.
    void followRegionEnd() { m_transport.followRegionEnd(); }

    void setSpeed(double speedPercent);
    /// Within the limits.
    void adjustSpeed(double byPercent);
    void setSpeedStep(double stepPercent);
    void setPitch(double pitchCents);
    /// Within the limits.
    void adjustPitch(double byCents);
    void setEqEnabled(bool enabled);
    void setEqGains(std::vector<double> gainsDb);
    void setEqGain(std::size_t band, double gainDb);
    void setLoopEnabled(bool enabled);
    void toggleLoop() { setLoopEnabled(!loopEnabled()); }
    void setLoopDelaySeconds(std::int64_t seconds);
    void setLoopDelayMilliseconds(std::int64_t milliseconds);
    void setZoomLevel(double zoomLevel);
    void setPanOffset(double panOffset);

    // ---- Steps back and forth ----

    /// Until `endGesture`, all edits are one step: a press of the mouse, and what it drags through.
    void beginGesture() { m_history.beginGesture(); }
    void endGesture() { m_history.endGesture(); }
    /// What would be undone or done again; nothing where there is nothing. `historyChanged` tells of changes.
    [[nodiscard]] std::optional<EditKind> undoable() const { return m_history.undoable(); }
    [[nodiscard]] std::optional<EditKind> redoable() const { return m_history.redoable(); }
    void undo();
    void redo();

    // ---- Transport ----

    /// Starts at the region's start, at the place that `seek` chose while nothing played, or at the held window's; a region
    /// without sound in it does not play.
    void togglePlayPause() { m_transport.togglePlayPause(); }
    void stopReset();
    /// Goes to a place of the region, and plays on from there if it plays; does nothing outside the region, and in hold.
    void seek(double seconds) { m_transport.seek(seconds); }
    /// Holds the play head's place (the region's start when nothing plays), or lets go and stops.
    void toggleHold() { m_transport.toggleHold(); }
    /// Moves the held window within the file and sounds it; does nothing outside hold.
    void stepHoldForward() { m_transport.stepHoldForward(); }
    void stepHoldBackward() { m_transport.stepHoldBackward(); }
    void setHoldEnabled(bool enabled);
    void setHoldPosition(double seconds);
    /// Which instant is heard, the latency counted: that of the sound, the held one's, or the play head's. Seconds.
    [[nodiscard]] double heardPosition() { return m_transport.heardPosition(); }
    /// From the next start on, a loop or a hold ends after so many passes; nothing: it does not end by itself.
    void setPassLimit(std::optional<std::int64_t> passes) { m_engine.setPassLimit(passes); }
    /// Whether voices keep their character when they are transposed. Not a setting of the file.
    void setKeepsFormants(bool keeps) { m_engine.timePitch().setKeepsFormants(keeps); }

    // The engine reports by these; they start and stop nothing.

    void setIsPlaying(bool isPlaying) override;
    void setPlaybackPosition(double seconds) override;
    void playbackDidEnd() override;
    void passBegins(const UpcomingPass& pass, std::int64_t repetition) override;

    // ---- Practice ----

    void setChannels(ChannelMode channels);
    /// Within its limits. Where it is on, the passes that follow take it up.
    void setTrainer(const Trainer& trainer);
    /// Begins with its first speed at once, in a loop. A speed that is set by hand pauses it.
    void startTrainer();
    void stopTrainer();
    /// As its key does: one that is paused goes on.
    void toggleTrainer();
    /// Goes on with the pass it was paused at, from the next pass on.
    void resumeTrainer();

    /// Keeps the region under a name, with speed and pitch, and the trainer where it is on; its place among the loops, or
    /// nothing where the region is empty or there are too many.
    std::optional<std::size_t> saveLoop();
    /// In place of the loop at `index`, which exists.
    void setLoop(std::size_t index, NamedLoop loop);
    /// With the present region, speed, pitch and trainer; its name and colour stay.
    void replaceLoop(std::size_t index);
    void removeLoop(std::size_t index);
    void moveLoop(std::size_t from, std::size_t to);
    void setLoops(std::vector<NamedLoop> loops);
    /// When a loop that is called up while another part plays begins.
    enum class CallUp { atJoint, atOnce };
    void callLoop(std::size_t index, CallUp when);
    /// Plays the loops one after the other, from the present one on; leaves that again.
    void playLoopList();
    void leaveLoopList();

    // ---- Stems ----

    /// Stops, and plays the stems instead of the file from then on.
    void enterStemMode(StemSession session, std::vector<StemFile> files, StemMix mix = {});
    /// Stops, and plays the file again.
    void exitStemMode();
    void setStemSession(std::optional<StemSession> session);
    /// Keeps the stems that are active with the song.
    void saveStemSession() { m_saver.saveStemSession(); }
    /// Null where there is none.
    [[nodiscard]] const StemSession::Stem* stem(std::string_view key) const;
    // These do nothing for a key that no stem has.
    void setStemMuted(std::string_view key, bool isMuted);
    /// A linear factor, taken into 0 to `StemMix::maxVolume`.
    void setStemVolume(std::string_view key, double volume);
    void setStemSoloed(std::string_view key, bool isSoloed);

    // ---- Settings ----

    void applySettings(const FileSettings& settings);
    /// What a file of this length (seconds) starts with; transport stopped, hold off, no stems.
    void resetToDefaults(double durationSeconds);
    /// Saves the settings that are current a moment after the last call; the settings on offer are not wanted, then.
    void settingsDidChange();
    /// Saves them at once if a file is loaded.
    void saveSettingsNow() { m_saver.saveNow(); }

    /// Goes back to the settings on offer, if there are any.
    void restoreOfferedSettings();
    void dismissOfferedSettings();

private:
    /// The road of an edit: `tellEngine` is called if the value differs, and it is saved in any case.
    template <typename T, typename TellEngine> void edit(T& field, T value, ChangeSignal changed, const TellEngine& tellEngine);
    /// The same for what can be undone.
    template <typename T, typename TellEngine>
    void edit(EditKind kind, T& field, T value, ChangeSignal changed, const TellEngine& tellEngine);
    void noteEdit(EditKind kind);
    /// A step of its own, whatever comes before and after it.
    void noteStep(EditKind kind);
    [[nodiscard]] EditedValues editedValues() const;
    void goTo(const std::optional<EditedValues>& values);
    /// Of what follows without a gap.
    void tellWhatFollows() { m_engine.nextSegmentDidChange(); }
    void setOfferedSettings(std::optional<FileSettings> settings);
    void setStemChannel(std::string_view key, StemMix::Channel channel);
    /// The road of an edit of what is kept in the practice.
    void editPractice(EditKind kind, Practice practice);
    void setPractice(std::shared_ptr<const Practice> practice);
    void callOffLoops();
    void setTrainerState(TrainerState trainerState, std::int64_t pass);
    void rewindTrainer();
    void takeLoop(const NamedLoop& taken);
    void takeTrainer(const std::optional<Trainer>& trainer, std::int64_t pass);
    void tellStemVolumes();

    AudioEngine& m_engine;
    Transport m_transport{ *this, m_engine };
    SettingsSaver m_saver;
    EditHistory m_history;
    /// The values are being set by something else than a hand: that is no edit.
    bool m_isByItself = false;
};

}  // namespace quillet
