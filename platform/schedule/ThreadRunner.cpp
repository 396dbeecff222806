#include "platform/schedule/ThreadRunner.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace quillet {

struct ThreadRunner::Shared {
    std::mutex mutex;
    std::condition_variable ended;
    int running = 0;  // guarded by mutex
};

ThreadRunner::ThreadRunner()
    : m_shared(std::make_shared<Shared>())
{
}

ThreadRunner::~ThreadRunner()
{
    std::unique_lock lock(m_shared->mutex);
    m_shared->ended.wait(lock, [&] { return m_shared->running == 0; });
}

void ThreadRunner::run(Job job)
{
    {
        const std::scoped_lock lock(m_shared->mutex);
        ++m_shared->running;
    }
    std::thread([shared = m_shared, job = std::move(job)]() mutable {
        job();
        // What the job holds goes before it counts as ended.
        job = nullptr;
        const std::scoped_lock lock(shared->mutex);
        --shared->running;
        shared->ended.notify_all();
    }).detach();
}

bool ThreadRunner::finish(double seconds)
{
    std::unique_lock lock(m_shared->mutex);
    return m_shared->ended.wait_for(lock, std::chrono::duration<double>(seconds), [&] { return m_shared->running == 0; });
}

}  // namespace quillet
