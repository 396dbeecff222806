#include "platform/process/Interruption.h"

#include "platform/base/Require.h"

#include <atomic>
#include <csignal>
#include <initializer_list>

namespace quillet {
namespace {

std::atomic<WakeDescriptor*> activeWake{ nullptr };
std::atomic<bool> interrupted{ false };

extern "C" void quilletInterrupted(int)
{
    interrupted.store(true);
    if (WakeDescriptor* wake = activeWake.load())
        wake->raise();
}

}  // namespace

Interruption::Interruption()
{
    REQUIRE(activeWake.exchange(&m_wake) == nullptr);
    interrupted.store(false);
    for (const int number : { SIGINT, SIGTERM, SIGHUP })
        std::signal(number, quilletInterrupted);
}

Interruption::~Interruption()
{
    for (const int number : { SIGINT, SIGTERM, SIGHUP })
        std::signal(number, SIG_DFL);
    activeWake.store(nullptr);
}

bool Interruption::requested() const { return interrupted.load(); }

}  // namespace quillet
