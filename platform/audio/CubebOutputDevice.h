// The machine's own sound device, through cubeb: PulseAudio, PipeWire's stand-in for it, JACK or ALSA, whichever answers first.
// It runs at the rate that the server prefers, or resamples where it is asked for another one.
// Threads: as OutputDevice; the controlling thread may block while a server is slow to answer, so it is not the main thread.
#pragma once

#include "platform/audio/OutputDevice.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace quillet {

class CubebOutputDevice final : public OutputDevice {
public:
    CubebOutputDevice();
    ~CubebOutputDevice() override;
    CubebOutputDevice(const CubebOutputDevice&) = delete;
    CubebOutputDevice& operator=(const CubebOutputDevice&) = delete;

    [[nodiscard]] std::expected<int, OutputError> open(int sampleRate, OutputCallback& callback, WakeSemaphore& died) override;
    void close() override;
    [[nodiscard]] bool isAlive() const override;
    [[nodiscard]] double latencySeconds() override;

private:
    struct Stream;
    std::unique_ptr<Stream> m_stream;
    double m_latencySeconds = 0;
};

}  // namespace quillet
