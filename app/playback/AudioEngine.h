// Plays a segment of the open file, or of its stems in step: once, in a loop with an optional pause, or as a short held window
// that repeats; and reports the play head to the state. It decides what is played when, and tells the graph ahead of time what
// will follow, so that nothing waits for this thread; how it sounds is the graph's business, and what the user may choose is
// the state's. It does not follow changes of the output device.
// Threads: main thread.
#pragma once

#include "app/playback/PlaybackState.h"
#include "app/playback/StemFiles.h"
#include "platform/audio/AudioGraph.h"
#include "platform/media/AudioFile.h"
#include "platform/schedule/Scheduler.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

class AudioEngine {
public:
    /// Both outlive the engine. The equaliser starts bypassed, all gains at 0 dB.
    AudioEngine(AudioGraph& graph, Scheduler& scheduler);
    ~AudioEngine();
    AudioEngine(const AudioEngine&) = delete;
    AudioEngine& operator=(const AudioEngine&) = delete;

    /// The composition root's engine.
    static AudioEngine& shared();

    /// The state to read from and report to; held weakly. Without one the engine plays, but neither reports nor repeats.
    void setAppState(std::weak_ptr<PlaybackState> appState) { m_appState = std::move(appState); }

    /// The file that `play` plays; none: nothing plays.
    void setAudioFile(std::shared_ptr<AudioFile> file);
    [[nodiscard]] const std::shared_ptr<AudioFile>& audioFile() const { return m_audioFile; }

    /// Plays [fromSeconds, toSeconds) of file time in place of whatever plays now; true if it does. Does nothing if that is
    /// empty or no file is set; only stops if it holds no whole frame or begins outside the file. Seconds × sample rate fits a
    /// signed 64-bit integer (REQUIRE).
    bool play(double fromSeconds, double toSeconds);
    /// Halts the sound and the play head, and calls off a repetition that waits for its time: what was paused stays silent.
    void pause();
    /// Ends the sound and calls off every repetition. Does not touch the state.
    void stop();

    /// Lets what plays go on to `toSeconds`, and end there; what follows it does so then. Does nothing where nothing plays, for
    /// a held window, and where the sound is beyond that place or its old end by now.
    void moveEnd(double toSeconds);

    /// Which instant of the file is heard now, seconds; nothing while nothing has been heard since `play`.
    [[nodiscard]] std::optional<double> heardSeconds();

    /// From the next `play` on, a loop or a hold ends after so many passes; nothing: it does not end by itself.
    void setPassLimit(std::optional<std::int64_t> passes) { m_passLimit = passes; }

    /// Tells the graph what follows the segment that plays. To be called after any change of the region, of the loop and its
    /// pause, or of hold and its position, while something may be playing; `play` does it by itself.
    void nextSegmentDidChange();

    /// Speed (as a rate, 1 is normal) and pitch (cents).
    [[nodiscard]] TimePitchNode& timePitch() { return m_graph.timePitch(); }
    [[nodiscard]] EqualizerNode& eq() { return m_graph.equalizer(); }
    void setChannels(ChannelMode channels) { m_graph.setChannels(channels); }
    /// `gain` in dB. A band that does not exist is ignored.
    void setEQGain(double gain, int band);

    /// Plays these stems instead of the file from the next `play` on. Where there are none, the file goes on being what plays.
    void enterStemMode(std::vector<StemFile> stems);
    /// Returns to the file: stops, and reports so to the state. Does nothing outside stem mode.
    void exitStemMode();
    [[nodiscard]] bool isInStemMode() const { return !m_stemNodes.empty(); }
    /// How loud the stem with `key` is heard, a linear factor; it stays in step with the others. Does nothing when there is
    /// none.
    void setStemVolume(std::string_view key, double volume);

private:
    struct StemNode {
        std::string key;
        std::unique_ptr<PlayerNode> player;
        std::unique_ptr<MixerNode> mixer;
        std::shared_ptr<AudioFile> file;
    };
    bool playFile(const TimeRange& segment);
    bool playStems(const TimeRange& segment);
    void schedule(PlayerNode& player, const std::shared_ptr<AudioFile>& file, const TimeRange& segment,
                  PlayerNode::CompletionHandler playedBack);
    [[nodiscard]] PlayerNode& primaryPlayer();
    void forEachPlayer(const std::function<void(PlayerNode&)>& action);
    void advanceGeneration();
    void beginGeneration(const TimeRange& segment);
    void startPositionTimer();
    [[nodiscard]] const AudioFile& primaryFile() const;
    [[nodiscard]] std::optional<double> reachedSeconds();

    PlayerNode::CompletionHandler completionHandler();
    void handleCompletion(std::int64_t generation);
    [[nodiscard]] double tailSeconds() const;
    void followUp(double delaySeconds, std::function<void()> action);
    void finishRegion();
    void awaitNextPass(double regionEnd, double delaySeconds);
    void playNextPass();
    [[nodiscard]] bool hasPlayedAllPasses();
    [[nodiscard]] std::optional<TimeRange> heldWindow() const;
    [[nodiscard]] PassPlan planFor(const AudioFile& file) const;
    void connectMainPlayer();

    AudioGraph& m_graph;
    Scheduler& m_scheduler;
    std::unique_ptr<PlayerNode> m_player;
    std::shared_ptr<AudioFile> m_audioFile;
    std::int64_t m_generation = 0;
    ScheduledTask m_positionTimer;
    std::weak_ptr<PlaybackState> m_appState;
    std::unique_ptr<MixerNode> m_stemMixer;
    std::vector<StemNode> m_stemNodes;

    // Of the present generation: nothing scheduled, a segment scheduled, or that segment completed.
    enum class Transport { idle, scheduled, ended };
    Transport m_transport = Transport::idle;
    /// What was scheduled last.
    TimeRange m_segment;
    /// What follows the segment that has ended, as it was settled then; and how many passes had ended when it was scheduled.
    std::vector<UpcomingPass> m_upcoming;
    std::int64_t m_passesSeen = 0;
    ScheduledTask m_followUp;
    std::optional<std::int64_t> m_passLimit;
    // Expires with the engine, for handlers that the graph keeps longer.
    std::shared_ptr<AudioEngine*> m_self;
};

}  // namespace quillet
