// The rules of playing, pausing and holding, and what an edit of the region means while something sounds. It decides what is to
// sound and says so to the engine and in the values; how one segment follows another is the engine's business.
// Threads: main thread.
#pragma once

#include "app/core/AppValues.h"
#include "app/playback/AudioEngine.h"

#include <optional>

namespace quillet {

class Transport {
public:
    /// Both outlive the transport.
    Transport(AppValues& values, AudioEngine& engine)
        : m_values(values),
          m_engine(engine)
    {
    }

    void togglePlayPause();
    /// Moves the play head to a place of the region. What plays goes on from there to the region's end, and then as usual; if
    /// nothing plays, the next start is there, unless something else moves the play head first. Does nothing outside the
    /// region, and in hold.
    void seek(double seconds);
    void toggleHold();
    void stepHoldForward();
    void stepHoldBackward();

    /// Ends the sound; the play head stays where it is.
    void stop();
    /// Ends the sound; the play head goes to the region's start.
    void stopReset();
    /// Plays the region from its start, if a region plays: it has been edited. One without sound in it ends the playing; a held
    /// instant sounds on.
    void restartRegion();
    /// Lets what plays go on to the region's end, wherever that has gone.
    void followRegionEnd();
    /// Which instant is heard, or would be looked at: seconds of file time, within the file.
    [[nodiscard]] double heardPosition();

private:
    /// True if the window sounds.
    bool holdAt(double seconds);
    void setPlaying(bool isPlaying);
    [[nodiscard]] double takeStart();

    AppValues& m_values;
    AudioEngine& m_engine;
    /// Where `seek` left the play head while nothing played.
    std::optional<double> m_parkedSeconds;
};

}  // namespace quillet
