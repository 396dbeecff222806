#include "platform/audio/GraphNodes.h"

#include "platform/audio/PlaybackGraph.h"
#include "platform/base/Require.h"

#include <algorithm>

namespace quillet {

// ---- Player ----

GraphPlayer::~GraphPlayer() { m_graph.remove(*this); }

void GraphPlayer::scheduleSegment(std::shared_ptr<AudioFile> file, FrameRange segment, CompletionHandler playedBack)
{
    takeSchedule({ std::move(file), segment, false, std::move(playedBack) });
}

void GraphPlayer::holdSegment(std::shared_ptr<AudioFile> file, FrameRange window, CompletionHandler playedBack)
{
    takeSchedule({ std::move(file), window, true, std::move(playedBack) });
}

void GraphPlayer::takeSchedule(Schedule schedule)
{
    REQUIRE(schedule.file != nullptr && schedule.segment.start >= 0 && schedule.segment.count > 0);
    m_schedule = std::move(schedule);
    m_plan = {};
    m_restart = true;
    m_graph.playerChanged();
}

void GraphPlayer::setPlan(PassPlan plan)
{
    if (!m_schedule || m_plan == plan)
        return;
    for (const PlannedPass& pass : plan.passes)
        REQUIRE(pass.segment.start >= 0 && pass.segment.count > 0 && pass.pauseSeconds >= 0 && pass.times > 0);
    m_plan = std::move(plan);
    m_graph.playerChanged();
}

bool GraphPlayer::moveEnd(std::int64_t count)
{
    REQUIRE(count > 0);
    if (!m_schedule || !m_graph.canMoveEnd(*this, count))
        return false;
    if (std::exchange(m_schedule->segment.count, count) != count)
        m_graph.playerChanged();
    return true;
}

void GraphPlayer::play()
{
    if (!m_schedule)
        return;
    m_state = State::playing;
    m_graph.playerChanged();
}

void GraphPlayer::pause()
{
    if (m_state != State::playing)
        return;
    m_state = State::paused;
    m_graph.playerChanged();
}

void GraphPlayer::stop()
{
    m_state = State::stopped;
    m_schedule.reset();
    m_plan = {};
    m_restart = true;
    m_graph.playerChanged();
}

std::optional<double> GraphPlayer::sampleTime() const { return m_graph.sampleTime(*this); }

std::int64_t GraphPlayer::passesEnded() const { return m_graph.passesEnded(*this); }

PlayerNode::CompletionHandler GraphPlayer::takeHandler()
{
    return m_schedule ? std::exchange(m_schedule->playedBack, nullptr) : nullptr;
}

// ---- Mixer ----

GraphMixer::~GraphMixer() { m_graph.remove(*this); }

void GraphMixer::setOutputVolume(double factor)
{
    m_volume = std::clamp(factor, 0.0, maximumVolume);
    m_gain->factor.store(static_cast<float>(m_volume), std::memory_order_relaxed);
}

// ---- Time and pitch ----

void GraphTimePitch::setRate(double rate)
{
    m_rate = std::clamp(rate, minimumRate, maximumRate);
    m_changed();
}

void GraphTimePitch::setPitch(double pitchCents)
{
    m_pitchCents = std::clamp(pitchCents, -maximumPitchCents, maximumPitchCents);
    m_changed();
}

void GraphTimePitch::setKeepsFormants(bool keeps)
{
    m_keepsFormants = keeps;
    m_changed();
}

// ---- Equaliser ----

void GraphEqualizer::setGain(int band, float gainDb)
{
    REQUIRE(band >= 0 && band < bandCount);
    constexpr auto limit = static_cast<float>(maximumGainDb);
    m_gainsDb[static_cast<std::size_t>(band)] = std::clamp(gainDb, -limit, limit);
    m_changed();
}

float GraphEqualizer::gain(int band) const
{
    REQUIRE(band >= 0 && band < bandCount);
    return m_gainsDb[static_cast<std::size_t>(band)];
}

void GraphEqualizer::setBypass(bool bypassed)
{
    m_bypass = bypassed;
    m_changed();
}

}  // namespace quillet
