#include "platform/base/WakeDescriptor.h"

#include "platform/base/Require.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

namespace quillet {

WakeDescriptor::WakeDescriptor()
    : m_descriptor(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
    REQUIRE(m_descriptor >= 0);
}

WakeDescriptor::~WakeDescriptor() { close(m_descriptor); }

void WakeDescriptor::raise() noexcept
{
    const std::uint64_t one = 1;
    // The only failure is a counter at its limit: the descriptor is readable then already.
    [[maybe_unused]] const ssize_t written = write(m_descriptor, &one, sizeof one);
}

void WakeDescriptor::clear() noexcept
{
    std::uint64_t count = 0;
    // The only failure is a counter of zero: there is nothing to clear then.
    [[maybe_unused]] const ssize_t taken = read(m_descriptor, &count, sizeof count);
}

}  // namespace quillet
