// What both schedulers promise, and what only one of them can show; and work on threads beside them.
#include "platform/base/Require.h"
#include "platform/schedule/DueQueue.h"
#include "platform/schedule/QtScheduler.h"
#include "platform/schedule/ThreadRunner.h"
#include "platform/schedule/VirtualScheduler.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <unistd.h>

#include <array>
#include <atomic>
#include <cmath>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <utility>
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
    void runFor(double seconds)
    {
        bool ended = false;
        const ScheduledTask end = m_scheduler.after(seconds, [&] { ended = true; });
        ASSERT_TRUE(runUntil([&] { return ended; }));
    }
};

/// A pipe with something in it.
class FullPipe {
public:
    FullPipe() { REQUIRE(pipe(m_ends.data()) == 0 && write(m_ends[1], "abc", 3) == 3); }
    ~FullPipe()
    {
        close(m_ends[0]);
        close(m_ends[1]);
    }
    FullPipe(const FullPipe&) = delete;
    FullPipe& operator=(const FullPipe&) = delete;

    [[nodiscard]] int descriptor() const { return m_ends[0]; }
    void take() const
    {
        char byte = 0;
        REQUIRE(read(m_ends[0], &byte, 1) == 1);
    }

private:
    std::array<int, 2> m_ends{};
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

TYPED_TEST(SchedulerContract, ACancelledDestroyedOrReplacedTaskDoesNotRunAndKeepsNothing)
{
    int ran = 0;
    const auto cargo = std::make_shared<int>();
    const auto count = [&ran, cargo] { ++ran; };
    ScheduledTask cancelled = this->m_scheduler.after(0.001, count);
    cancelled.cancel();
    {
        const ScheduledTask destroyed = this->m_scheduler.every(0.001, count);
    }
    ScheduledTask replaced = this->m_scheduler.after(0.001, count);
    replaced = this->m_scheduler.after(0.005, count);
    EXPECT_EQ(cargo.use_count(), 3);
    this->runFor(0.02);
    EXPECT_EQ(ran, 1);
    EXPECT_EQ(cargo.use_count(), 2);
}

TYPED_TEST(SchedulerContract, AnActionMayEndItsOwnTaskAndOthersThatAreDueWithIt)
{
    int ticks = 0;
    bool otherRan = false;
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
    this->runFor(0.1);
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
    const FullPipe pipe;
    int ran = 0;
    ScheduledTask watch;
    watch = this->m_scheduler.watch(pipe.descriptor(), [&] {
        pipe.take();
        if (++ran == 2)
            watch.cancel();
    });
    EXPECT_EQ(ran, 0);
    this->runFor(0.02);
    EXPECT_EQ(ran, 2);
}

TYPED_TEST(SchedulerContract, OneDescriptorsActionMayEndTheWatchOfAnother)
{
    const std::array<FullPipe, 2> pipes;
    std::array<ScheduledTask, 2> watches;
    int ran = 0;
    for (std::size_t i = 0; i < 2; ++i)
        watches[i] = this->m_scheduler.watch(pipes[i].descriptor(), [&] {
            ++ran;
            watches = {};
        });
    this->runFor(0.02);
    EXPECT_EQ(ran, 1);
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

TEST(QtScheduler, HandlesMayOutliveIt)
{
    const FullPipe pipe;
    std::vector<ScheduledTask> handles;
    {
        QtClockwork clockwork;
        handles.push_back(clockwork.scheduler().every(1, [] { }));
        handles.push_back(clockwork.scheduler().watch(pipe.descriptor(), [] { }));
    }
    handles.clear();
}

TEST(VirtualScheduler, EverythingRunsAtItsOwnTimeWhateverTheSteps)
{
    for (const double step : { 0.05, 0.1, 0.001, 1.0 }) {
        VirtualScheduler scheduler;
        std::vector<double> times;
        const auto note = [&] { times.push_back(std::round(scheduler.nowSeconds() * 1e6) / 1e6); };
        ScheduledTask chained;
        const ScheduledTask ticking = scheduler.every(0.25, note);
        const ScheduledTask first = scheduler.after(0.3, [&] {
            scheduler.post(note);
            chained = scheduler.after(0.35, note);
        });
        while (scheduler.nowSeconds() < 0.9999)
            scheduler.advance(step);
        EXPECT_EQ(times, (std::vector{ 0.25, 0.3, 0.5, 0.65, 0.75, 1.0 })) << step;
    }
}

TEST(DueQueue, ARepeatingTaskLeavesOutTheTurnsItMissedAndKeepsItsBeat)
{
    using Time = DueQueue::Nanoseconds;
    for (const auto& [finishedAt, expectedNext] :
         { std::pair<Time, Time>{ 100, 110 }, { 109, 110 }, { 110, 120 }, { 111, 120 }, { 135, 140 }, { 140, 150 } }) {
        DueQueue queue;
        const ScheduledTask handle = queue.add(100, 10, [] { });
        queue.finish(queue.take(100), finishedAt);
        EXPECT_EQ(queue.nextDue(), expectedNext) << "finished at " << finishedAt;
    }
}

TEST(ThreadRunner, AJobThatHangsHoldsUpNoOther)
{
    std::promise<void> release;
    std::promise<std::thread::id> other;
    {
        ThreadRunner runner;
        runner.run([hung = release.get_future().share()] { hung.wait(); });
        runner.run([&] { other.set_value(std::this_thread::get_id()); });
        EXPECT_NE(other.get_future().get(), std::this_thread::get_id());
        EXPECT_FALSE(runner.finish(0.01));
        release.set_value();
        EXPECT_TRUE(runner.finish(60));
    }
}

TEST(ThreadRunner, EndsWithItsJobs)
{
    std::atomic<int> done = 0;
    {
        ThreadRunner runner;
        for (int i = 0; i < 20; ++i)
            runner.run([&] { ++done; });
    }
    EXPECT_EQ(done, 20);
}

}  // namespace
}  // namespace quillet
