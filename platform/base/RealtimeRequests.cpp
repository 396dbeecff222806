#include "platform/base/RealtimeRequests.h"

namespace quillet {
namespace {

// Made before any thread, so that the device callback never makes it.
RealtimeRequests requestsOfThisProcess;

}  // namespace

void RealtimeRequests::add(pid_t thread) noexcept
{
    for (auto& place : m_threads) {
        pid_t none = 0;
        if (place.compare_exchange_strong(none, thread)) {
            m_added.wake();
            return;
        }
    }
}

std::optional<pid_t> RealtimeRequests::take() noexcept
{
    for (auto& place : m_threads)
        if (const pid_t thread = place.exchange(0); thread != 0)
            return thread;
    return std::nullopt;
}

RealtimeRequests& realtimeRequests() noexcept { return requestsOfThisProcess; }

}  // namespace quillet
