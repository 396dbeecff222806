// A device that makes no sound but takes as long as one: playback goes on where there is no sound device, or none any more.
// Threads: as OutputDevice; the callback comes on a thread of its own.
#pragma once

#include "platform/audio/OutputDevice.h"

#include <thread>

namespace quillet {

class NullOutputDevice final : public OutputDevice {
public:
    [[nodiscard]] std::expected<int, OutputError> open(int sampleRate, OutputCallback& callback, WakeSemaphore& died) override;
    void close() override;
    [[nodiscard]] bool isAlive() const override { return true; }
    [[nodiscard]] double latencySeconds() override;

private:
    std::jthread m_worker;
};

}  // namespace quillet
