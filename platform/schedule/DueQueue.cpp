#include "platform/schedule/DueQueue.h"

#include "platform/base/Require.h"

#include <cmath>

namespace quillet {

DueQueue::Nanoseconds DueQueue::nanoseconds(double seconds)
{
    const double exact = seconds * 1e9;
    REQUIRE(std::abs(exact) < 9.2e18);
    return std::llround(exact);
}

ScheduledTask DueQueue::add(Nanoseconds due, Nanoseconds interval, Scheduler::Action action)
{
    auto task = std::make_shared<Task>(Task{ interval, std::move(action), { due, 0 } });
    insert(task);
    return ScheduledTask([tasks = std::weak_ptr(m_tasks), task = std::weak_ptr(task)] {
        const auto cancelled = task.lock();
        if (!cancelled)
            return;
        cancelled->cancelled = true;
        // A task that is running is in nobody's queue, and its action is kept until it returns.
        if (const auto queue = tasks.lock())
            queue->erase(cancelled->place);
    });
}

std::optional<DueQueue::Nanoseconds> DueQueue::nextDue()
{
    if (m_tasks->empty())
        return std::nullopt;
    return m_tasks->begin()->first.first;
}

std::shared_ptr<DueQueue::Task> DueQueue::take(Nanoseconds now)
{
    if (m_tasks->empty() || m_tasks->begin()->first.first > now)
        return nullptr;
    auto task = std::move(m_tasks->begin()->second);
    m_tasks->erase(m_tasks->begin());
    return task;
}

void DueQueue::finish(std::shared_ptr<Task> task, Nanoseconds now)
{
    if (task->cancelled || task->interval == once)
        return;
    Nanoseconds& due = task->place.first;
    due += task->interval;
    if (due <= now)
        due = now + task->interval - (now - due) % task->interval;
    insert(std::move(task));
}

void DueQueue::insert(std::shared_ptr<Task> task)
{
    task->place.second = m_added++;
    const Place place = task->place;
    m_tasks->emplace(place, std::move(task));
}

}  // namespace quillet
