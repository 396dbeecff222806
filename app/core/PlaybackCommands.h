// What keys, menus and controls do to the playing: each changes the state within its limits, tells the engine, and sees to it
// that the change is saved.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/playback/AudioEngine.h"

namespace quillet {

class PlaybackCommands {
public:
    /// Both outlive the commands.
    PlaybackCommands(AppState& state, AudioEngine& engine)
        : m_state(state),
          m_engine(engine)
    {
    }

    /// Stops; the play head goes to the region's start.
    void stopReset();
    void toggleLoop();
    /// Plays the region from its start again, if something plays.
    void restartPlayback();

    /// By the user's step.
    void decreaseSpeed() { changeSpeed(-m_state.speedStep()); }
    void increaseSpeed() { changeSpeed(m_state.speedStep()); }
    void changeSpeed(double byPercent) { setSpeed(m_state.speed() + byPercent); }
    /// Percent, clamped.
    void setSpeed(double percent);

    void pitchUp() { changePitch(1); }
    void pitchDown() { changePitch(-1); }
    void changePitch(double byCents) { setPitch(m_state.pitch() + byCents); }
    /// Cents, clamped.
    void setPitch(double cents);

private:
    AppState& m_state;
    AudioEngine& m_engine;
};

}  // namespace quillet
