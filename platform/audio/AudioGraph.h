// The audio graph as the engine sees it: players feed (through mixers, for stems) the time-pitch unit, that feeds the
// equaliser, and that feeds the output. One road only; the graph is no general patch bay. It says what is played, not how:
// the engine's logic runs unchanged over the real graph, an offline one, or a fake in virtual time.
// Threads: main thread, all of it; completion handlers are called there too.
#pragma once

#include "platform/audio/ChannelMode.h"
#include "platform/media/AudioFile.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace quillet {

/// A half-open range of frames of a file: [start, start + count).
struct FrameRange {
    std::int64_t start = 0;
    std::int64_t count = 0;
    bool operator==(const FrameRange&) const = default;
};

/// A pass that is to follow the scheduled segment.
struct PlannedPass {
    static constexpr std::int64_t endless = INT64_MAX;

    /// Frames of the player's file.
    FrameRange segment = {};
    /// Silence before it, placed by frames; without one the pass joins the pass before it seamlessly.
    double pauseSeconds = 0;
    /// Its own speed and pitch; nothing: the time-pitch unit's. Once the pass has been taken over they are the unit's, which
    /// is to be set to them before.
    std::optional<double> rate = std::nullopt;
    std::optional<double> pitchCents = std::nullopt;
    /// A held window, as in `PlayerNode::holdSegment`.
    bool held = false;
    /// How often it is played in a row, at least once.
    std::int64_t times = 1;

    bool operator==(const PlannedPass&) const = default;
};

/// What is to follow the scheduled segment, pass by pass.
struct PassPlan {
    std::vector<PlannedPass> passes;
    /// The sound ends when so many passes have been played, counted as `PlayerNode::passesEnded` counts them.
    std::optional<std::int64_t> passLimit = std::nullopt;

    bool operator==(const PassPlan&) const = default;
};

class AudioNode {
public:
    virtual ~AudioNode() = default;
};

/// Plays one scheduled segment of a file and the passes planned after it. Destroying a player takes it out of the graph.
class PlayerNode : public AudioNode {
public:
    using CompletionHandler = std::function<void()>;

    /// Makes `segment` (its start at least 0, its count above 0) of `file` what the next `play` sounds, in place of anything
    /// scheduled before. Where another segment sounds already, it goes on until the new one is ready, and the two cross over.
    /// `playedBack` (may be empty) is called once, when the segment's last frame has been handed to the device: it is heard
    /// `presentationLatencySeconds` later. It is not called for a segment that is stopped, replaced or never played. What lies
    /// beyond the file's end is cut off.
    virtual void scheduleSegment(std::shared_ptr<AudioFile> file, FrameRange segment, CompletionHandler playedBack) = 0;
    /// The same for a window that is held: a short instant that is to repeat. The sound repeats at a length that fits the
    /// waveform, so that it sings instead of trembling; positions and ends are those of the window.
    virtual void holdSegment(std::shared_ptr<AudioFile> file, FrameRange window, CompletionHandler playedBack) = 0;

    /// What follows the scheduled segment, in place of any plan before. The graph works through it by itself; a `stop`,
    /// `scheduleSegment`, `play` of exactly the pass that sounds by then (or is about to, after its pause) takes it over, and
    /// the plan given then is what follows that pass. A change is heard at its place however far ahead of the sound the old
    /// plan has been prepared. Forgotten at the next `scheduleSegment`.
    virtual void setPlan(PassPlan plan) = 0;

    /// Lets the scheduled segment end `count` (above 0) frames after its start instead, while it sounds on without a break; its
    /// handler, its plan and the positions stay. False where that cannot be: without a segment, and where the sound is beyond
    /// the old end or the new one by now.
    virtual bool moveEnd(std::int64_t count) = 0;

    /// Starts the scheduled segment, or goes on after `pause`. Nothing happens without a segment.
    virtual void play() = 0;
    /// Holds the segment where it is.
    virtual void pause() = 0;
    /// Forgets the segment.
    virtual void stop() = 0;

    /// Frames of the source that have been heard since the scheduled segment's start (it may exceed the segment's length after
    /// the end); nothing while the player has not sounded yet. Counts source frames whatever the rate is.
    [[nodiscard]] virtual std::optional<double> sampleTime() const = 0;
    /// Passes handed to the device to their last frame since the sound began, with those that were taken over; 0 when nothing
    /// sounds.
    [[nodiscard]] virtual std::int64_t passesEnded() const = 0;
};

/// Sums its inputs and scales the sum. Destroying a mixer takes it out of the graph.
class MixerNode : public AudioNode {
public:
    static constexpr double maximumVolume = 2;

    /// A linear factor, 0 (silent) to `maximumVolume`, 1 leaving the sound as it is; changes glide over a few milliseconds.
    virtual void setOutputVolume(double factor) = 0;
    [[nodiscard]] virtual double outputVolume() const = 0;
};

/// Changes speed without pitch and pitch without speed. At rate 1 and pitch 0 it leaves every sample as it is.
class TimePitchNode : public AudioNode {
public:
    static constexpr double minimumRate = 0.05;
    static constexpr double maximumRate = 3.0;
    static constexpr double maximumPitchCents = 1200;

    /// Source seconds per second heard, clamped to [minimumRate, maximumRate]; takes effect while playing.
    virtual void setRate(double rate) = 0;
    [[nodiscard]] virtual double rate() const = 0;
    /// Clamped to ±maximumPitchCents.
    virtual void setPitch(double pitchCents) = 0;
    [[nodiscard]] virtual double pitch() const = 0;
    /// Whether voices keep their character when they are transposed (their formants stay where they are); off at first.
    virtual void setKeepsFormants(bool keeps) = 0;
    [[nodiscard]] virtual bool keepsFormants() const = 0;
};

/// Five parametric bands, one octave wide. A gain set is the gain at that band's centre, whatever the other bands do.
class EqualizerNode : public AudioNode {
public:
    static constexpr int bandCount = 5;
    static constexpr double frequenciesHz[bandCount] = { 60, 250, 1000, 4000, 12000 };
    static constexpr double maximumGainDb = 12;

    /// Clamped to ±maximumGainDb. `band` is 0 to bandCount - 1. The gain is kept while bypassed.
    virtual void setGain(int band, float gainDb) = 0;
    [[nodiscard]] virtual float gain(int band) const = 0;
    virtual void setBypass(bool bypassed) = 0;
    [[nodiscard]] virtual bool bypass() const = 0;
};

class AudioGraph {
public:
    virtual ~AudioGraph() = default;

    [[nodiscard]] virtual std::unique_ptr<PlayerNode> makePlayer() = 0;
    [[nodiscard]] virtual std::unique_ptr<MixerNode> makeMixer() = 0;
    virtual TimePitchNode& timePitch() = 0;
    virtual EqualizerNode& equalizer() = 0;

    /// Which channels are heard, before anything else is made of them; a change glides. `stereo` leaves every sample as it is.
    virtual void setChannels(ChannelMode channels) = 0;

    /// Leads `source` (a player or a mixer) into `destination` (a mixer or the time-pitch unit). A mixer takes several sources,
    /// the time-pitch unit one: connecting a second replaces the first. All players that reach the time-pitch unit sound in
    /// step, each to its own end, whatever their files' sample rates; the plan and the positions are those of the first one.
    virtual void connect(AudioNode& source, AudioNode& destination) = 0;
    virtual void disconnectInput(AudioNode& destination) = 0;

    /// Opens the output. A machine without a device is no error: the graph then plays to a device that only takes time.
    virtual void start() = 0;
    [[nodiscard]] virtual bool isRunning() const = 0;
    /// Gets ready for files of this sample rate, so that the first sound of one does not wait for it.
    virtual void prepare(int sampleRate) = 0;

    /// How long a frame handed to the device takes to the ear, in seconds.
    [[nodiscard]] virtual double presentationLatencySeconds() const = 0;

protected:
    friend class GraphChange;
    virtual void beginChange() = 0;
    virtual void commitChange() = 0;
};

/// Commands to players made while a GraphChange lives reach the sound together, at one instant, when the outermost one ends.
/// Outside of any, each command stands alone.
class GraphChange {
public:
    explicit GraphChange(AudioGraph& graph)
        : m_graph(graph)
    {
        m_graph.beginChange();
    }
    ~GraphChange() { m_graph.commitChange(); }
    GraphChange(const GraphChange&) = delete;
    GraphChange& operator=(const GraphChange&) = delete;

private:
    AudioGraph& m_graph;
};

}  // namespace quillet
