// One stream to one sound device: asks for frames at the pace of a sample rate, from a thread of its own.
// Threads: a controlling thread opens and closes; the callback comes on the device's thread.
#pragma once

#include "platform/base/RealtimeScope.h"
#include "platform/base/WakeSemaphore.h"

#include <cstdint>
#include <expected>
#include <span>

namespace quillet {

/// Asked by an output for the next frames.
class OutputCallback {
public:
    virtual ~OutputCallback() = default;
    /// Before the first call of `render` for a stream, on the thread that opens it. It will ask for `blockFrames` frames at
    /// once; 0: nobody knows yet.
    virtual void streamBegins([[maybe_unused]] std::int64_t blockFrames) { }
    /// Audio thread: fills interleaved stereo frames. Never called by two threads at once.
    virtual void render(std::span<float> stereo) QUILLET_REALTIME = 0;
    /// Audio thread: whether the next `frames` frames are there already, for an output that can wait.
    [[nodiscard]] virtual bool isReady(std::int64_t frames) const QUILLET_REALTIME = 0;
};

enum class OutputError { noServer, refused };

class OutputDevice {
public:
    virtual ~OutputDevice() = default;

    /// Begins to call `callback` for frames at `sampleRate` Hz (0: at the rate that the device prefers), until `close`; answers
    /// with the rate. `died` is woken when the stream dies by itself; both must outlive the stream.
    [[nodiscard]] virtual std::expected<int, OutputError> open(int sampleRate, OutputCallback& callback,
                                                               WakeSemaphore& died) = 0;
    /// Ends the stream; after it the callback is not called any more. Harmless when none is open.
    virtual void close() = 0;
    /// False once the open stream has died (the server went away, the device was pulled). Any thread.
    [[nodiscard]] virtual bool isAlive() const = 0;
    /// The time from a frame handed over to the ear, in seconds.
    [[nodiscard]] virtual double latencySeconds() = 0;
};

}  // namespace quillet
