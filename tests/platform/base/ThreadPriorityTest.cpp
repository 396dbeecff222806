#include "platform/base/ThreadPriority.h"

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <thread>
#include <utility>

namespace quillet {
namespace {

/// How many processors the calling thread may use, and its nice level.
std::pair<int, int> standing()
{
    cpu_set_t allowed;
    EXPECT_EQ(sched_getaffinity(0, sizeof allowed, &allowed), 0);
    return { CPU_COUNT(&allowed), getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())) };
}

TEST(ThreadPriorityTest, WorkThatNobodyWaitsForLeavesRoomForAllOther)
{
    const auto before = standing();
    const std::pair lowered{ std::max(1, before.first - 1), std::max(loweredNiceLevel, before.second) };
    std::thread([&] {
        lowerThreadPriority();
        EXPECT_EQ(standing(), lowered);
        std::thread([&] { EXPECT_EQ(standing(), lowered); }).join();
    }).join();
    EXPECT_EQ(standing(), before);
}

}  // namespace
}  // namespace quillet
