#include "platform/audio/NullOutputDevice.h"

#include <chrono>
#include <vector>

namespace quillet {
namespace {

constexpr int periodsPerSecond = 100;
constexpr int preferredRate = 48000;

void consume(const std::stop_token& stopped, int sampleRate, OutputCallback& callback)
{
    using Clock = std::chrono::steady_clock;
    std::vector<float> frames(static_cast<std::size_t>(2 * (sampleRate / periodsPerSecond)));
    auto due = Clock::now();
    while (!stopped.stop_requested()) {
        callback.render(frames);
        due += std::chrono::microseconds(1'000'000 / periodsPerSecond);
        // After a pause of the whole machine there is nothing to catch up with.
        if (due + std::chrono::seconds(1) < Clock::now())
            due = Clock::now();
        std::this_thread::sleep_until(due);
    }
}

}  // namespace

std::expected<int, OutputError> NullOutputDevice::open(int sampleRate, OutputCallback& callback, WakeSemaphore&)
{
    const int rate = sampleRate > 0 ? sampleRate : preferredRate;
    callback.streamBegins(0);
    m_worker = std::jthread([rate, &callback](const std::stop_token& stopped) { consume(stopped, rate, callback); });
    return rate;
}

void NullOutputDevice::close() { m_worker = std::jthread(); }

double NullOutputDevice::latencySeconds() { return 1.0 / periodsPerSecond; }

}  // namespace quillet
