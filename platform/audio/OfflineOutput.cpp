#include "platform/audio/OfflineOutput.h"

#include "platform/base/Require.h"

#include <algorithm>

namespace quillet {
namespace {

/// A limit for one wait, so that a wake lost to another waiter only costs time.
constexpr double waitSeconds = 0.05;

}  // namespace

void OfflineOutput::start(OutputCallback& callback, std::function<void(State)>)
{
    m_callback = &callback;
    m_callback->streamBegins(blockFrames);
}

void OfflineOutput::pull(std::span<float> stereo)
{
    REQUIRE(m_callback != nullptr);
    constexpr std::size_t blockSamples = 2 * blockFrames;
    for (std::size_t at = 0; at < stereo.size(); at += blockSamples) {
        const auto block = stereo.subspan(at, std::min(blockSamples, stereo.size() - at));
        while (!m_callback->isReady(static_cast<std::int64_t>(block.size()) / 2))
            m_ready.wait(waitSeconds);
        m_callback->render(block);
    }
}

}  // namespace quillet
