#include "app/core/AppValues.h"

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

}  // namespace quillet
