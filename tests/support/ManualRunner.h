// Background work that runs when the test says so, in the order that it chooses: a slow disk, or two requests that overtake
// each other.
// Threads: one.
#pragma once

#include "platform/schedule/BackgroundRunner.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace quillet {

class ManualRunner final : public BackgroundRunner {
public:
    void run(Job job) override { m_waiting.push_back(std::move(job)); }

    [[nodiscard]] std::size_t waiting() const { return m_waiting.size(); }

    /// Does the job that has waited `index` places after the longest-waiting one.
    void finish(std::size_t index = 0)
    {
        const Job job = std::move(m_waiting.at(index));
        m_waiting.erase(m_waiting.begin() + static_cast<std::ptrdiff_t>(index));
        job();
    }

private:
    std::vector<Job> m_waiting;
};

}  // namespace quillet
