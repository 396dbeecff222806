// The output of a graph for as long as the graph lives, whatever becomes of the devices behind it: the machine's device with a
// substitute (LiveOutput), or a caller who pulls frames faster than real time (OfflineOutput).
// Threads: main thread, except where a function says otherwise.
#pragma once

#include "platform/audio/OutputDevice.h"

#include <functional>

namespace quillet {

class AudioOutput {
public:
    enum class State {
        /// Frames go to a device that is heard.
        device,
        /// There is no device; frames only take time.
        substitute,
    };

    virtual ~AudioOutput() = default;

    /// Begins to ask `callback`, which outlives the output's work, for frames. `changed` is called on the main thread when a
    /// device was lost or found; the first call tells how it began.
    virtual void start(OutputCallback& callback, std::function<void(State)> changed) = 0;
    /// Ends the work; after it the callback is not called any more.
    virtual void stop() = 0;
    /// Frames a second that the output asks for; 0 while that is not known. Where it is free to choose it is what its device
    /// prefers.
    [[nodiscard]] virtual int sampleRate() const = 0;
    /// Binds it to a rate; 0 leaves it free again, which by itself changes nothing for a device that is open.
    virtual void setSampleRate(int sampleRate) = 0;
    /// Lets the device rest while there is nothing to play, and wakes it.
    virtual void suspend() = 0;
    virtual void resume() = 0;

    /// The time from a frame handed over to the ear, in seconds.
    [[nodiscard]] virtual double latencySeconds() const = 0;
    /// Whether frames are asked for at the pace at which they sound.
    [[nodiscard]] virtual bool isRealTime() const = 0;
    /// Any thread: more frames are ready.
    virtual void framesReady() { }
};

}  // namespace quillet
