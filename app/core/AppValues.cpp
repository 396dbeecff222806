#include "app/core/AppValues.h"

#include "app/core/PassOrder.h"

#include <algorithm>

namespace quillet {

AppValues::AppValues()
    : m_eqGains(FileSettings().eqGains)
{
}

FileSettings AppValues::currentSettings() const
{
    return { m_region.start, m_region.end, m_speed,       m_speedStep,        m_pitch,
             m_eqEnabled,    m_eqGains,    m_loopEnabled, m_loopDelaySeconds, m_loopDelayMilliseconds };
}

std::optional<std::size_t> AppValues::presentLoop() const
{
    if (m_listPlace)
        return m_listPlace->loop;
    const auto found = std::ranges::find(loops(), m_region, &NamedLoop::region);
    return found != loops().end() ? std::optional(static_cast<std::size_t>(found - loops().begin())) : std::nullopt;
}

std::vector<UpcomingPass> AppValues::upcomingPasses() const
{
    if (m_holdEnabled)
        return PlaybackState::upcomingPasses();
    if (m_listPlace && m_waitingLoop)
        return PassOrder::listed(loops(), *m_waitingLoop, 0);
    if (m_listPlace) {
        auto passes = PassOrder::listed(loops(), m_listPlace->loop, m_listPlace->pass + 1);
        // What was changed by hand holds until another loop begins.
        if (passes.front().loop == m_listPlace->loop) {
            passes.front().speed = m_speed;
            passes.front().pitch = m_pitch;
        }
        return passes;
    }
    if (m_waitingLoop)
        return PassOrder::called(loops()[*m_waitingLoop], *m_waitingLoop, m_loopEnabled);
    if (m_trainerState == TrainerState::on && m_loopEnabled && !m_region.isEmpty())
        return PassOrder::trained(m_region, trainer(), m_trainerPass + 1);
    return PlaybackState::upcomingPasses();
}

}  // namespace quillet
