// What both schedulers promise, and what only the event loop's can show.
#include "platform/schedule/QtScheduler.h"
#include "platform/schedule/VirtualScheduler.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <unistd.h>

#include <array>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace quillet {
namespace {

/// A scheduler and what makes it go on.
class Clockwork {
public:
    virtual ~Clockwork() = default;
    virtual Scheduler& scheduler() = 0;
    /// Lets time pass until `done` answers true; false if that takes more than ten seconds.
    virtual bool runUntil(const std::function<bool()>& done) = 0;
};

class QtClockwork final : public Clockwork {
public:
    Scheduler& scheduler() override { return m_scheduler; }
    bool runUntil(const std::function<bool()>& done) override
    {
        bool late = false;
        const ScheduledTask guard = m_scheduler.after(10, [&] { late = true; });
        while (!done() && !late)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return !late;
    }

private:
    int m_argumentCount = 1;
    std::array<char, 5> m_name{ "test" };
    std::array<char*, 2> m_arguments{ m_name.data(), nullptr };
    QCoreApplication m_application{ m_argumentCount, m_arguments.data() };
    QtScheduler m_scheduler;
};

class VirtualClockwork final : public Clockwork {
public:
    Scheduler& scheduler() override { return m_scheduler; }
    bool runUntil(const std::function<bool()>& done) override
    {
        while (!done() && m_scheduler.nowSeconds() < 10)
            m_scheduler.advance(0.001);
        return done();
    }

private:
    VirtualScheduler m_scheduler;
};

template <typename T> class SchedulerContract : public testing::Test {
protected:
    T m_clockwork;
    Scheduler& m_scheduler = m_clockwork.scheduler();

    bool runUntil(const std::function<bool()>& done) { return m_clockwork.runUntil(done); }
};

using Clockworks = testing::Types<QtClockwork, VirtualClockwork>;
TYPED_TEST_SUITE(SchedulerContract, Clockworks);

TYPED_TEST(SchedulerContract, RunsWhatIsDueInOrderAndNothingBeforeItsTime)
{
    std::vector<int> order;
    std::vector<ScheduledTask> tasks;
    const double start = this->m_scheduler.nowSeconds();
    std::vector<double> times;
    const int delays[] = { 3, 1, 2, 1, 0 };
    for (int i = 0; i < 5; ++i)
        tasks.push_back(this->m_scheduler.after(0.05 * delays[i], [&, i] {
            order.push_back(i);
            times.push_back(this->m_scheduler.nowSeconds() - start);
        }));
    EXPECT_TRUE(order.empty());
    ASSERT_TRUE(this->runUntil([&] { return order.size() == 5; }));
    EXPECT_EQ(order, (std::vector{ 4, 1, 3, 2, 0 }));
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_GE(times[i] + 1e-9, 0.05 * delays[order[i]]);
}

TYPED_TEST(SchedulerContract, ACancelledDestroyedOrReplacedTaskDoesNotRun)
{
    int ran = 0;
    const auto count = [&] { ++ran; };
    ScheduledTask cancelled = this->m_scheduler.after(0.001, count);
    cancelled.cancel();
    {
        const ScheduledTask destroyed = this->m_scheduler.every(0.001, count);
    }
    ScheduledTask replaced = this->m_scheduler.after(0.001, count);
    replaced = this->m_scheduler.after(0.005, count);
    bool ended = false;
    const ScheduledTask end = this->m_scheduler.after(0.02, [&] { ended = true; });
    ASSERT_TRUE(this->runUntil([&] { return ended; }));
    EXPECT_EQ(ran, 1);
}

TYPED_TEST(SchedulerContract, AnActionMayEndItsOwnTaskAndOthersThatAreDueWithIt)
{
    int ticks = 0;
    bool otherRan = false;
    bool ended = false;
    const auto cargo = std::make_shared<int>(7);
    int cargoAfterwards = 0;
    ScheduledTask other;
    auto ticking = std::make_unique<ScheduledTask>();
    *ticking = this->m_scheduler.every(0.001, [&, kept = cargo] {
        if (++ticks < 3)
            return;
        ticking.reset();
        other.cancel();
        cargoAfterwards = *kept;
    });
    other = this->m_scheduler.after(0.05, [&] { otherRan = true; });
    const ScheduledTask end = this->m_scheduler.after(0.1, [&] { ended = true; });
    ASSERT_TRUE(this->runUntil([&] { return ended; }));
    EXPECT_EQ(ticks, 3);
    EXPECT_FALSE(otherRan);
    EXPECT_EQ(cargoAfterwards, 7);
}

TYPED_TEST(SchedulerContract, PostedActionsRunOnTheMainThreadInTheirThreadsOrder)
{
    constexpr int threadCount = 4;
    constexpr int perThread = 200;
    std::array<std::vector<int>, threadCount> order;
    int elsewhere = 0;
    const auto mainThread = std::this_thread::get_id();
    {
        std::vector<std::jthread> threads;
        for (std::size_t t = 0; t < threadCount; ++t)
            threads.emplace_back([&, t] {
                for (int i = 0; i < perThread; ++i)
                    this->m_scheduler.post([&, t, i] {
                        order[t].push_back(i);
                        elsewhere += std::this_thread::get_id() != mainThread;
                    });
            });
    }
    EXPECT_TRUE(order[0].empty());
    bool last = false;
    this->m_scheduler.post([&] { this->m_scheduler.post([&] { last = true; }); });
    EXPECT_FALSE(last);
    ASSERT_TRUE(this->runUntil([&] { return last; }));
    for (const auto& numbers : order) {
        ASSERT_EQ(numbers.size(), std::size_t{ perThread });
        EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
    }
    EXPECT_EQ(elsewhere, 0);
}

TYPED_TEST(SchedulerContract, WatchesADescriptorUntilItsTaskEnds)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    int bytesRead = 0;
    ScheduledTask watch;
    watch = this->m_scheduler.watch(ends[0], [&] {
        char byte = 0;
        bytesRead += static_cast<int>(read(ends[0], &byte, 1));
        if (bytesRead == 3)
            watch.cancel();
    });
    ASSERT_EQ(write(ends[1], "ab", 2), 2);
    EXPECT_EQ(bytesRead, 0);
    ASSERT_TRUE(this->runUntil([&] { return bytesRead == 2; }));
    ASSERT_EQ(write(ends[1], "cde", 3), 3);
    bool ended = false;
    const ScheduledTask end = this->m_scheduler.after(0.02, [&] { ended = true; });
    ASSERT_TRUE(this->runUntil([&] { return ended; }));
    EXPECT_EQ(bytesRead, 3);
    close(ends[0]);
    close(ends[1]);
}

TYPED_TEST(SchedulerContract, OneDescriptorsActionMayEndTheWatchOfAnother)
{
    std::array<std::array<int, 2>, 2> pipes{};
    std::array<ScheduledTask, 2> watches;
    int ran = 0;
    for (std::size_t i = 0; i < 2; ++i) {
        ASSERT_EQ(pipe(pipes[i].data()), 0);
        watches[i] = this->m_scheduler.watch(pipes[i][0], [&, i] {
            char byte = 0;
            ran += static_cast<int>(read(pipes[i][0], &byte, 1));
            watches[1 - i].cancel();
        });
        ASSERT_EQ(write(pipes[i][1], "a", 1), 1);
    }
    bool ended = false;
    const ScheduledTask end = this->m_scheduler.after(0.02, [&] { ended = true; });
    ASSERT_TRUE(this->runUntil([&] { return ended; }));
    EXPECT_EQ(ran, 1);
    for (const auto& ends : pipes)
        for (const int descriptor : ends)
            close(descriptor);
}

TEST(QtScheduler, AnActionThatOpensALoopOfItsOwnDoesNotHoldUpTheOthers)
{
    QtClockwork clockwork;
    Scheduler& scheduler = clockwork.scheduler();
    int ticks = 0;
    int ticksInside = 0;
    QEventLoop loop;
    const ScheduledTask menu = scheduler.after(0, [&] {
        loop.exec();
        ticksInside = ticks;
    });
    const ScheduledTask ticking = scheduler.every(0.001, [&] {
        if (++ticks == 3)
            loop.quit();
    });
    // A loop that nothing serves would not end: it is called off from outside of the scheduler.
    QTimer::singleShot(5000, &loop, &QEventLoop::quit);
    ASSERT_TRUE(clockwork.runUntil([&] { return ticksInside != 0; }));
    EXPECT_EQ(ticksInside, 3);
}

TEST(QtScheduler, AHandleMayOutliveIt)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    std::vector<ScheduledTask> handles;
    {
        QtClockwork clockwork;
        handles.push_back(clockwork.scheduler().every(1, [] { }));
        handles.push_back(clockwork.scheduler().watch(ends[0], [] { }));
    }
    handles.clear();
    close(ends[0]);
    close(ends[1]);
}

}  // namespace
}  // namespace quillet
