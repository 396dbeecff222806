#include "platform/audio/LiveOutput.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace quillet {
namespace {

constexpr double retrySeconds = 0.25;
/// How often the latency is measured while a device sounds; the mean follows it slowly, for its single values scatter.
constexpr double measureSeconds = 0.1;
constexpr double newestPart = 0.25;
/// So far off it is no scatter but another device, or another latency.
constexpr double anotherLatencySeconds = 0.03;
constexpr double idleSeconds = 3600;

}  // namespace

LiveOutput::LiveOutput(std::unique_ptr<OutputDevice> device, std::unique_ptr<OutputDevice> substitute, Scheduler& scheduler)
    : m_device(std::move(device)),
      m_substitute(std::move(substitute)),
      m_scheduler(scheduler)
{
}

LiveOutput::~LiveOutput() { stop(); }

void LiveOutput::start(OutputCallback& callback, std::function<void(State)> changed)
{
    stop();
    m_callback = &callback;
    m_changed = std::move(changed);
    m_wish.sounding = true;
    std::promise<void> ended;
    m_ended = ended.get_future();
    m_keeper = std::jthread([this, ended = std::move(ended)](const std::stop_token& stopped) mutable {
        run(stopped);
        ended.set_value();
    });
}

void LiveOutput::stop()
{
    m_keeper.request_stop();
    m_wake.wake();
    m_keeper = std::jthread();
}

bool LiveOutput::finish(double seconds)
{
    m_keeper.request_stop();
    m_wake.wake();
    return !m_ended.valid() || m_ended.wait_for(std::chrono::duration<double>(seconds)) == std::future_status::ready;
}

void LiveOutput::setSampleRate(int sampleRate)
{
    change([sampleRate](Wish& wish) { wish.sampleRate = sampleRate; });
}

void LiveOutput::suspend()
{
    change([](Wish& wish) { wish.sounding = false; });
}

void LiveOutput::resume()
{
    change([](Wish& wish) { wish.sounding = true; });
}

void LiveOutput::change(const std::function<void(Wish&)>& edit)
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

void LiveOutput::run(const std::stop_token& stopped)
{
    while (!stopped.stop_requested()) {
        Wish wish;
        {
            const std::scoped_lock lock(m_lock);
            wish = m_wish;
        }
        const bool lost = m_open == State::device && !m_device->isAlive();
        const bool otherRate = wish.sampleRate != 0 && wish.sampleRate != m_sampleRate.load();
        if (lost || otherRate || !wish.sounding)
            closeAll();
        if (!wish.sounding) {
            // Another device may be there when it wakes up.
            m_sampleRate.store(0);
            m_told.reset();
        }
        if (wish.sounding && m_open != State::device)
            open(wish.sampleRate);
        if (m_open == State::device)
            measureLatency();
        m_wake.wait(!wish.sounding ? idleSeconds : m_open == State::substitute ? retrySeconds : measureSeconds);
    }
    closeAll();
}

void LiveOutput::open(int sampleRate)
{
    openDevice(sampleRate);
    if (!m_open)
        openSubstitute(sampleRate);
}

/// Tries the device; a substitute that is running goes on until the device has answered.
void LiveOutput::openDevice(int sampleRate)
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
    if (const auto rate = m_device->open(sampleRate, *m_callback, m_wake))
        opened(State::device, *rate);
}

void LiveOutput::openSubstitute(int sampleRate)
{
    if (const auto rate = m_substitute->open(sampleRate, *m_callback, m_wake)) {
        opened(State::substitute, *rate);
        m_latencySeconds.store(m_substitute->latencySeconds());
    }
}

void LiveOutput::opened(State state, int sampleRate)
{
    m_open = state;
    m_sampleRate.store(sampleRate);
    tell(state);
}

void LiveOutput::closeAll()
{
    m_device->close();
    m_substitute->close();
    m_open.reset();
}

void LiveOutput::measureLatency()
{
    const double before = m_latencySeconds.load();
    const double change = m_device->latencySeconds() - before;
    m_latencySeconds.store(before + change * (std::abs(change) < anotherLatencySeconds ? newestPart : 1));
}

void LiveOutput::tell(State state)
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
