#include "platform/schedule/QtScheduler.h"

#include "platform/base/Require.h"
#include "platform/schedule/DueQueue.h"

#include <QPointer>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <limits>

namespace quillet {
namespace {

DueQueue::Nanoseconds now() { return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count(); }

}  // namespace

class QtScheduler::Loop {
public:
    Loop()
    {
        m_timer.setSingleShot(true);
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_context, [this] { runOne(); });
    }

    void post(Action action)
    {
        // What was done before is seen by the action: the event queue's lock sees to that, and this says so to the thread
        // sanitizer, which does not see the lock.
        m_posted.fetch_add(1, std::memory_order_release);
        auto run = [this, action = std::move(action)] {
            static_cast<void>(m_posted.load(std::memory_order_acquire));
            action();
        };
        QMetaObject::invokeMethod(&m_context, std::move(run), Qt::QueuedConnection);
    }

    ScheduledTask add(DueQueue::Nanoseconds delay, DueQueue::Nanoseconds interval, Action action)
    {
        requireMainThread();
        ScheduledTask task = m_queue.add(now() + delay, interval, std::move(action));
        arm();
        return task;
    }

    ScheduledTask watch(int descriptor, Action action)
    {
        requireMainThread();
        auto* notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, &m_context);
        QObject::connect(notifier, &QSocketNotifier::activated, &m_context, std::move(action));
        // The action may be running when it ends its own task, so the notifier outlives this turn of the loop.
        return ScheduledTask([watched = QPointer(notifier)] {
            if (watched.isNull())
                return;
            watched->setEnabled(false);
            watched->disconnect();
            watched->deleteLater();
        });
    }

private:
    void requireMainThread() const { REQUIRE(QThread::currentThread() == m_context.thread()); }

    void arm()
    {
        const auto due = m_queue.nextDue();
        if (!due) {
            m_timer.stop();
            return;
        }
        constexpr DueQueue::Nanoseconds millisecond = 1'000'000;
        const DueQueue::Nanoseconds wait = (std::max<DueQueue::Nanoseconds>(*due - now(), 0) + millisecond - 1) / millisecond;
        m_timer.start(static_cast<int>(std::min<DueQueue::Nanoseconds>(wait, std::numeric_limits<int>::max())));
    }

    // One task a turn, and the timer armed before it runs: an action may open a menu, whose loop serves the others.
    void runOne()
    {
        auto task = m_queue.take(now());
        arm();
        if (!task)
            return;
        task->run();
        m_queue.finish(std::move(task), now());
        arm();
    }

    std::atomic<std::uint64_t> m_posted{ 0 };
    QObject m_context;
    QTimer m_timer;
    DueQueue m_queue;
};

QtScheduler::QtScheduler()
    : m_loop(std::make_unique<Loop>())
{
}

QtScheduler::~QtScheduler() = default;

void QtScheduler::post(Action action) { m_loop->post(std::move(action)); }

ScheduledTask QtScheduler::after(double delaySeconds, Action action)
{
    REQUIRE(delaySeconds >= 0);
    return m_loop->add(DueQueue::nanoseconds(delaySeconds), DueQueue::once, std::move(action));
}

ScheduledTask QtScheduler::every(double intervalSeconds, Action action)
{
    const DueQueue::Nanoseconds interval = DueQueue::nanoseconds(intervalSeconds);
    REQUIRE(interval > 0);
    return m_loop->add(interval, interval, std::move(action));
}

ScheduledTask QtScheduler::watch(int descriptor, Action action) { return m_loop->watch(descriptor, std::move(action)); }

double QtScheduler::nowSeconds() const { return static_cast<double>(now()) * 1e-9; }

}  // namespace quillet
