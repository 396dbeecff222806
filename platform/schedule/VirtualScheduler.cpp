#include "platform/schedule/VirtualScheduler.h"

#include "platform/base/Require.h"

#include <poll.h>

#include <algorithm>
#include <utility>

namespace quillet {

void VirtualScheduler::post(Action action)
{
    const std::scoped_lock lock(m_postedMutex);
    m_posted.push_back(std::move(action));
}

ScheduledTask VirtualScheduler::after(double delaySeconds, Action action)
{
    REQUIRE(delaySeconds >= 0);
    return m_queue.add(m_now + DueQueue::nanoseconds(delaySeconds), DueQueue::once, std::move(action));
}

ScheduledTask VirtualScheduler::every(double intervalSeconds, Action action)
{
    const DueQueue::Nanoseconds interval = DueQueue::nanoseconds(intervalSeconds);
    REQUIRE(interval > 0);
    return m_queue.add(m_now + interval, interval, std::move(action));
}

ScheduledTask VirtualScheduler::watch(int descriptor, Action action)
{
    auto watch = std::make_shared<Watch>(Watch{ descriptor, std::move(action) });
    m_watches.push_back(watch);
    return ScheduledTask([watch = std::move(watch)] { watch->cancelled = true; });
}

double VirtualScheduler::nowSeconds() const { return static_cast<double>(m_now) * 1e-9; }

void VirtualScheduler::advance(double seconds)
{
    REQUIRE(seconds >= 0);
    REQUIRE(!std::exchange(m_advancing, true));
    const DueQueue::Nanoseconds end = m_now + DueQueue::nanoseconds(seconds);
    while (runPosted() || pollDescriptors() || runDue(end)) { }
    m_now = end;
    m_advancing = false;
}

bool VirtualScheduler::pollDescriptors()
{
    std::erase_if(m_watches, [](const auto& watch) { return watch.expired(); });
    std::vector<std::shared_ptr<Watch>> watches;
    std::vector<pollfd> requests;
    for (const auto& watch : m_watches) {
        watches.push_back(watch.lock());
        requests.push_back({ watches.back()->descriptor, POLLIN, 0 });
    }
    if (requests.empty() || ::poll(requests.data(), requests.size(), 0) <= 0)
        return false;
    bool ran = false;
    for (std::size_t i = 0; i < watches.size(); ++i) {
        if ((requests[i].revents & (POLLIN | POLLHUP | POLLERR)) == 0 || watches[i]->cancelled)
            continue;
        watches[i]->action();
        ran = true;
    }
    return ran;
}

bool VirtualScheduler::runPosted()
{
    std::vector<Action> posted;
    {
        const std::scoped_lock lock(m_postedMutex);
        posted.swap(m_posted);
    }
    for (const Action& action : posted)
        action();
    return !posted.empty();
}

bool VirtualScheduler::runDue(DueQueue::Nanoseconds limit)
{
    auto task = m_queue.take(limit);
    if (!task)
        return false;
    m_now = std::max(m_now, task->place.first);
    task->run();
    m_queue.finish(std::move(task), m_now);
    return true;
}

}  // namespace quillet
