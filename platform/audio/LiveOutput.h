// Plays to the machine's device, and while there is none (never was, server killed, headphones pulled) to a substitute that
// takes the same time; it tries the device again every 250 ms. Playback never stops for it.
// Threads: main thread outside; a thread of its own opens, closes and watches the devices, since a server may be slow to
// answer.
#pragma once

#include "platform/audio/AudioOutput.h"
#include "platform/base/WakeSemaphore.h"
#include "platform/schedule/Scheduler.h"

#include <atomic>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace quillet {

class LiveOutput final : public AudioOutput {
public:
    LiveOutput(std::unique_ptr<OutputDevice> device, std::unique_ptr<OutputDevice> substitute, Scheduler& scheduler);
    ~LiveOutput() override;
    LiveOutput(const LiveOutput&) = delete;
    LiveOutput& operator=(const LiveOutput&) = delete;

    void start(OutputCallback& callback, std::function<void(State)> changed) override;
    void stop() override;
    /// As `stop`, but a sound server that does not answer is waited for no longer than that. False if it was: then the program
    /// can only be left by a way that destroys nothing (std::_Exit).
    [[nodiscard]] bool finish(double seconds);
    [[nodiscard]] int sampleRate() const override { return m_sampleRate.load(std::memory_order_relaxed); }
    void setSampleRate(int sampleRate) override;
    void suspend() override;
    void resume() override;
    [[nodiscard]] double latencySeconds() const override { return m_latencySeconds.load(std::memory_order_relaxed); }
    [[nodiscard]] bool isRealTime() const override { return true; }

private:
    /// What the main thread asks for.
    struct Wish {
        /// 0: whatever the device prefers.
        int sampleRate = 0;
        bool sounding = true;
        bool operator==(const Wish&) const = default;
    };

    void change(const std::function<void(Wish&)>& edit);

    // ---- Keeper thread ----

    void run(const std::stop_token& stopped);
    void open(int sampleRate);
    void openDevice(int sampleRate);
    void openSubstitute(int sampleRate);
    void opened(State state, int sampleRate);
    void closeAll();
    void measureLatency();
    void tell(State state);

    std::unique_ptr<OutputDevice> m_device, m_substitute;
    Scheduler& m_scheduler;
    OutputCallback* m_callback = nullptr;
    std::function<void(State)> m_changed;
    /// Dies with this object, so that news that are still on their way find nobody.
    std::shared_ptr<int> m_life = std::make_shared<int>(0);

    WakeSemaphore m_wake;
    std::mutex m_lock;
    Wish m_wish;

    std::atomic<double> m_latencySeconds{ 0.025 };
    std::atomic<int> m_sampleRate{ 0 };

    std::optional<State> m_open, m_told;
    /// Ready when the keeper's work is done.
    std::future<void> m_ended;
    std::jthread m_keeper;
};

}  // namespace quillet
