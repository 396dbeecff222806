#include "platform/audio/DeviceOutput.h"

#include <algorithm>
#include <utility>

namespace quillet {
namespace {

constexpr double retrySeconds = 0.25;
/// How often the latency is measured while a device sounds; the mean follows it slowly, for its single values scatter.
constexpr double measureSeconds = 0.1;
constexpr double newestPart = 0.25;
constexpr double idleSeconds = 3600;

}  // namespace

DeviceOutput::DeviceOutput(std::unique_ptr<OutputDevice> device, std::unique_ptr<OutputDevice> substitute, Scheduler& scheduler)
    : m_device(std::move(device)),
      m_substitute(std::move(substitute)),
      m_scheduler(scheduler)
{
}

DeviceOutput::~DeviceOutput() { stop(); }

void DeviceOutput::start(int sampleRate, OutputCallback& callback, std::function<void(State)> changed)
{
    stop();
    m_callback = &callback;
    m_changed = std::move(changed);
    m_wish = { sampleRate, true };
    m_keeper = std::jthread([this](const std::stop_token& stopped) { run(stopped); });
}

void DeviceOutput::stop()
{
    m_keeper.request_stop();
    m_wake.wake();
    m_keeper = std::jthread();
}

void DeviceOutput::setSampleRate(int sampleRate)
{
    change([sampleRate](Wish& wish) { wish.sampleRate = sampleRate; });
}

void DeviceOutput::suspend()
{
    change([](Wish& wish) { wish.sounding = false; });
}

void DeviceOutput::resume()
{
    change([](Wish& wish) { wish.sounding = true; });
}

void DeviceOutput::change(const std::function<void(Wish&)>& edit)
{
    {
        const std::scoped_lock lock(m_lock);
        const Wish before = m_wish;
        edit(m_wish);
        if (m_wish == before)
            return;
    }
    m_wake.wake();
}

// ---- Keeper thread ----

void DeviceOutput::run(const std::stop_token& stopped)
{
    std::optional<Wish> present;
    while (!stopped.stop_requested()) {
        Wish wish;
        {
            const std::scoped_lock lock(m_lock);
            wish = m_wish;
        }
        const bool lost = m_open == State::device && !m_device->isAlive();
        if (present != wish || lost)
            closeAll();
        if (wish.sounding && m_open != State::device)
            open(wish.sampleRate);
        present = wish;
        if (m_open == State::device)
            measureLatency();
        m_wake.wait(!wish.sounding ? idleSeconds : m_open == State::substitute ? retrySeconds : measureSeconds);
    }
    closeAll();
}

void DeviceOutput::open(int sampleRate)
{
    openDevice(sampleRate);
    if (!m_open)
        openSubstitute(sampleRate);
}

/// Tries the device; a substitute that is running goes on until the device has answered.
void DeviceOutput::openDevice(int sampleRate)
{
    // The device must not call back while the substitute does.
    struct Silence final : OutputCallback {
        void render(std::span<float> stereo) QUILLET_REALTIME override { std::fill(stereo.begin(), stereo.end(), 0.0F); }
        [[nodiscard]] bool isReady(std::int64_t) const QUILLET_REALTIME override { return true; }
    };
    if (m_open == State::substitute) {
        Silence silence;
        WakeSemaphore ignored;
        const bool answers = m_device->open(sampleRate, silence, ignored).has_value();
        m_device->close();
        if (!answers)
            return;
        closeAll();
    }
    if (m_device->open(sampleRate, *m_callback, m_wake)) {
        m_open = State::device;
        tell(State::device);
    }
}

void DeviceOutput::openSubstitute(int sampleRate)
{
    if (!m_substitute->open(sampleRate, *m_callback, m_wake))
        return;
    m_open = State::substitute;
    m_latencySeconds.store(m_substitute->latencySeconds());
    tell(State::substitute);
}

void DeviceOutput::closeAll()
{
    m_device->close();
    m_substitute->close();
    m_open.reset();
}

void DeviceOutput::measureLatency()
{
    const double before = m_latencySeconds.load();
    m_latencySeconds.store(before + (m_device->latencySeconds() - before) * newestPart);
}

void DeviceOutput::tell(State state)
{
    if (m_told == state)
        return;
    m_told = state;
    m_scheduler.post([this, life = std::weak_ptr(m_life), state] {
        if (!life.expired())
            m_changed(state);
    });
}

}  // namespace quillet
