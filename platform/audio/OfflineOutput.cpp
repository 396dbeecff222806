#include "platform/audio/OfflineOutput.h"

#include "platform/base/Require.h"

namespace quillet {
namespace {

/// A limit for one wait, so that a wake lost to another waiter only costs time.
constexpr double waitSeconds = 0.05;

}  // namespace

void OfflineOutput::start(int, OutputCallback& callback, std::function<void(State)>) { m_callback = &callback; }

void OfflineOutput::pull(std::span<float> stereo)
{
    REQUIRE(m_callback != nullptr);
    while (!m_callback->isReady(static_cast<std::int64_t>(stereo.size()) / 2))
        m_ready.wait(waitSeconds);
    m_callback->render(stereo);
}

}  // namespace quillet
