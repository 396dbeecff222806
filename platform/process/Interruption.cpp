#include "platform/process/Interruption.h"

#include "platform/base/Require.h"

#include <atomic>
#include <csignal>

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
    std::signal(SIGINT, quilletInterrupted);
    std::signal(SIGTERM, quilletInterrupted);
}

Interruption::~Interruption()
{
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    activeWake.store(nullptr);
}

bool Interruption::requested() const { return interrupted.load(); }

}  // namespace quillet
