// An output for rendering to a file: the caller pulls frames as fast as they can be made, and nothing runs dry because pulling
// waits for the renderer.
// Threads: main thread; `framesReady` anywhere.
#pragma once

#include "platform/audio/AudioOutput.h"

#include <cstdint>
#include <span>

namespace quillet {

class OfflineOutput final : public AudioOutput {
public:
    /// Frames taken from the renderer at once: so many that the two threads seldom change places. It keeps twice as many ready.
    static constexpr std::int64_t blockFrames = 512;

    /// The frames' rate in Hz; 0: whatever the file that is played has.
    explicit OfflineOutput(int sampleRate = 0)
        : m_sampleRate(sampleRate)
    {
    }

    /// From the next start on.
    void fixSampleRate(int sampleRate) { m_sampleRate = sampleRate; }

    void start(OutputCallback& callback, std::function<void(State)> changed) override;
    void stop() override { m_callback = nullptr; }
    [[nodiscard]] int sampleRate() const override { return m_sampleRate; }
    void setSampleRate(int) override { }
    void suspend() override { }
    void resume() override { }
    [[nodiscard]] double latencySeconds() const override { return 0; }
    [[nodiscard]] bool isRealTime() const override { return false; }
    void framesReady() override { m_ready.wake(); }

    /// Fills `stereo` with the next frames, waiting until they are rendered.
    void pull(std::span<float> stereo);

private:
    int m_sampleRate;
    OutputCallback* m_callback = nullptr;
    WakeSemaphore m_ready;
};

}  // namespace quillet
