#include "app/core/PlaybackCommands.h"

#include "AppCore/PitchInputParser.h"
#include "AppCore/SpeedInputParser.h"

#include <algorithm>

namespace quillet {

void PlaybackCommands::stopReset()
{
    m_engine.stop();
    m_state.setIsPlaying(false);
    m_state.setPlaybackPosition(m_state.regionStart());
}

void PlaybackCommands::toggleLoop() { m_state.setLoopEnabled(!m_state.loopEnabled()); }

void PlaybackCommands::restartPlayback()
{
    if (!m_state.isPlaying())
        return;
    m_engine.stop();
    m_engine.play(m_state.regionStart(), m_state.regionEnd());
}

void PlaybackCommands::setSpeed(double percent)
{
    m_state.setSpeed(std::clamp(percent, SpeedInputParser::min, SpeedInputParser::max));
    m_engine.timePitch().setRate(m_state.speed() / 100);
}

void PlaybackCommands::setPitch(double cents)
{
    m_state.setPitch(std::clamp(cents, PitchInputParser::min, PitchInputParser::max));
    m_engine.timePitch().setPitch(m_state.pitch());
}

}  // namespace quillet
