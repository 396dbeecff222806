#include "app/waveform/PlayheadMotion.h"

#include <algorithm>
#include <cmath>

namespace quillet {
namespace {

/// Farther than this from where it should be the play head jumps; nearer it glides there.
constexpr double jumpSeconds = 0.12;
/// Where no report comes any more (a pause between two passes) the head waits after this time.
constexpr double patienceSeconds = 0.12;
/// Part of the difference that is made up for with every frame.
constexpr double catchingUp = 0.1;

}  // namespace

void PlayheadMotion::report(double seconds, double sinceAdvance)
{
    m_reported = seconds;
    // More has passed only where nothing was drawn for a while.
    m_sinceReport = -std::min(sinceAdvance, patienceSeconds);
}

void PlayheadMotion::rest()
{
    m_shown = m_reported;
    m_sinceReport = 0;
}

void PlayheadMotion::advance(double seconds, double limit)
{
    m_sinceReport += seconds;
    const double expected = m_reported + std::min(m_sinceReport, patienceSeconds) * m_rate;
    const double end = std::max(limit, m_reported);
    const double target = std::min(expected, end);
    const bool waits = m_sinceReport > patienceSeconds || expected > end;
    const double glided = m_shown + (waits ? 0 : seconds * m_rate);
    const double error = target - glided;
    m_shown = std::abs(error) > jumpSeconds * std::max(m_rate, 0.25) ? target : glided + catchingUp * error;
}

}  // namespace quillet
