#include "platform/schedule/ThreadRunner.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

namespace quillet {
namespace {

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
