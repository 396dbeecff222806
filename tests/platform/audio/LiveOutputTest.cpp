// Devices that are lost and found, over devices that a test holds by strings.

#include "platform/audio/LiveOutput.h"
#include "platform/schedule/VirtualScheduler.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace quillet {
namespace {

/// What the test and both devices share.
struct Bench {
    std::mutex lock;
    std::condition_variable changed;
    bool deviceExists = true;
    bool answers = true;
    int openDevices = 0;
    int openSubstitutes = 0;
    int preferredRate = 48000;
    int sampleRate = 0;
    WakeSemaphore* died = nullptr;

    template <typename Condition> bool waitFor(Condition condition)
    {
        std::unique_lock held(lock);
        return changed.wait_for(held, std::chrono::seconds(20), condition);
    }
};

class BenchDevice final : public OutputDevice {
public:
    BenchDevice(Bench& bench, bool isReal)
        : m_bench(bench),
          m_isReal(isReal)
    {
    }

    std::expected<int, OutputError> open(int sampleRate, OutputCallback& callback, WakeSemaphore& died) override
    {
        const std::scoped_lock held(m_bench.lock);
        if (m_isReal && !m_bench.deviceExists)
            return std::unexpected(OutputError::noServer);
        std::vector<float> block(8);
        callback.render(block);
        m_open = true;
        ++openCount();
        m_bench.sampleRate = sampleRate > 0 ? sampleRate : m_bench.preferredRate;
        if (m_isReal)
            m_bench.died = &died;
        m_bench.changed.notify_all();
        return m_bench.sampleRate;
    }

    void close() override
    {
        std::unique_lock held(m_bench.lock);
        if (!std::exchange(m_open, false))
            return;
        m_bench.changed.wait(held, [this] { return m_bench.answers; });
        --openCount();
        m_bench.changed.notify_all();
    }

    bool isAlive() const override
    {
        const std::scoped_lock held(m_bench.lock);
        return m_open && m_bench.deviceExists;
    }

    double latencySeconds() override { return m_isReal ? 0.03 : 0.01; }

private:
    int& openCount() { return m_isReal ? m_bench.openDevices : m_bench.openSubstitutes; }

    Bench& m_bench;
    bool m_isReal;
    bool m_open = false;
};

struct Silence final : OutputCallback {
    void render(std::span<float>) QUILLET_REALTIME override { }
    [[nodiscard]] bool isReady(std::int64_t) const QUILLET_REALTIME override { return true; }
};

struct LiveOutputTest : testing::Test {
    Bench bench;
    Silence callback;
    VirtualScheduler scheduler;
    std::vector<AudioOutput::State> told;
    LiveOutput output{ std::make_unique<BenchDevice>(bench, true), std::make_unique<BenchDevice>(bench, false), scheduler };

    void start()
    {
        output.start(callback, [this](AudioOutput::State state) { told.push_back(state); });
    }

    std::vector<AudioOutput::State> news(std::size_t count)
    {
        for (int i = 0; i < 2000 && told.size() < count; ++i) {
            scheduler.advance(0);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return told;
    }

    void setAnswers(bool answers)
    {
        const std::scoped_lock held(bench.lock);
        bench.answers = answers;
        bench.changed.notify_all();
    }

    void setDeviceExists(bool exists)
    {
        const std::scoped_lock held(bench.lock);
        bench.deviceExists = exists;
        if (!exists && bench.died != nullptr)
            bench.died->wake();
    }
};

using State = AudioOutput::State;

TEST_F(LiveOutputTest, ALostDeviceIsReplacedAndTakenBackWhenItReturns)
{
    start();
    EXPECT_EQ(news(1), std::vector{ State::device });
    setDeviceExists(false);
    EXPECT_TRUE(bench.waitFor([this] { return bench.openSubstitutes == 1 && bench.openDevices == 0; }));
    EXPECT_EQ(news(2), (std::vector{ State::device, State::substitute }));
    setDeviceExists(true);
    EXPECT_TRUE(bench.waitFor([this] { return bench.openDevices == 1 && bench.openSubstitutes == 0; }));
    EXPECT_EQ(news(3), (std::vector{ State::device, State::substitute, State::device }));
    output.stop();
    EXPECT_EQ(bench.openDevices + bench.openSubstitutes, 0);
}

TEST_F(LiveOutputTest, ADeviceThatDoesNotAnswerKeepsNobodyWaiting)
{
    EXPECT_TRUE(output.finish(0));
    start();
    EXPECT_EQ(news(1), std::vector{ State::device });
    setAnswers(false);
    EXPECT_FALSE(output.finish(0.01));
    setAnswers(true);
    EXPECT_TRUE(output.finish(20));
    EXPECT_EQ(bench.openDevices, 0);
}

TEST_F(LiveOutputTest, AMachineWithoutADeviceIsToldOnce)
{
    setDeviceExists(false);
    start();
    EXPECT_TRUE(bench.waitFor([this] { return bench.openSubstitutes == 1; }));
    output.setSampleRate(44100);
    EXPECT_TRUE(bench.waitFor([this] { return bench.openSubstitutes == 1 && bench.sampleRate == 44100; }));
    EXPECT_EQ(news(1), std::vector{ State::substitute });
}

TEST_F(LiveOutputTest, RunsAtTheDevicesRateUnlessBoundAndLooksForItAgainAfterARest)
{
    start();
    EXPECT_EQ(news(1), std::vector{ State::device });
    EXPECT_EQ(output.sampleRate(), 48000);
    output.setSampleRate(48000);
    bench.preferredRate = 96000;
    setDeviceExists(false);
    EXPECT_EQ(news(2).back(), State::substitute);
    setDeviceExists(true);
    EXPECT_EQ(news(3).back(), State::device);
    EXPECT_EQ(output.sampleRate(), 48000) << "what sounds goes on at its rate";

    output.suspend();
    output.setSampleRate(0);
    EXPECT_TRUE(bench.waitFor([this] { return bench.openDevices == 0; }));
    output.resume();
    EXPECT_EQ(news(4).back(), State::device);
    EXPECT_EQ(output.sampleRate(), 96000);
}

}  // namespace
}  // namespace quillet
