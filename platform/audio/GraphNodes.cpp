#include "platform/audio/GraphNodes.h"

#include "platform/audio/PlaybackGraph.h"
#include "platform/base/Require.h"

#include <algorithm>

namespace quillet {

// ---- Player ----

GraphPlayer::~GraphPlayer() { m_graph.remove(*this); }

void GraphPlayer::scheduleSegment(std::shared_ptr<AudioFile> file, FrameRange segment, CompletionHandler playedBack)
{
    REQUIRE(file != nullptr && segment.start >= 0 && segment.count > 0 && segment.start < file->length());
    segment.count = std::min(segment.count, file->length() - segment.start);
    m_schedule = Schedule{ std::move(file), segment, std::move(playedBack) };
    m_hint.reset();
    m_restart = true;
    m_graph.playerChanged(*this);
}

void GraphPlayer::hintNextSegment(std::optional<FrameRange> segment)
{
    if (!m_schedule)
        return;
    const std::int64_t length = m_schedule->file->length();
    if (segment && (segment->start < 0 || segment->count <= 0 || segment->start >= length))
        segment.reset();
    if (segment)
        segment->count = std::min(segment->count, length - segment->start);
    m_hint = segment;
    m_graph.playerChanged(*this);
}

void GraphPlayer::play()
{
    if (!m_schedule)
        return;
    m_state = State::playing;
    m_graph.playerChanged(*this);
}

void GraphPlayer::pause()
{
    if (m_state != State::playing)
        return;
    m_state = State::paused;
    m_graph.playerChanged(*this);
}

void GraphPlayer::stop()
{
    m_state = State::stopped;
    m_schedule.reset();
    m_hint.reset();
    m_restart = true;
    m_graph.playerChanged(*this);
}

std::optional<double> GraphPlayer::sampleTime() const { return m_graph.sampleTime(*this); }

PlayerNode::CompletionHandler GraphPlayer::takeHandler()
{
    return m_schedule ? std::exchange(m_schedule->playedBack, nullptr) : nullptr;
}

// ---- Mixer ----

GraphMixer::~GraphMixer() { m_graph.remove(*this); }

void GraphMixer::setOutputVolume(double factor)
{
    m_volume = std::clamp(factor, 0.0, 1.0);
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
