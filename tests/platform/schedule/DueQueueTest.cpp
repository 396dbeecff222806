#include "platform/schedule/DueQueue.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace quillet {
namespace {

TEST(DueQueue, ARepeatingTaskLeavesOutTheTurnsItMissedAndKeepsItsBeat)
{
    struct Case {
        DueQueue::Nanoseconds finishedAt;
        DueQueue::Nanoseconds expectedNext;
    };
    const Case cases[] = { { 100, 110 }, { 109, 110 }, { 110, 120 }, { 111, 120 }, { 135, 140 }, { 140, 150 } };
    for (const Case& c : cases) {
        DueQueue queue;
        const ScheduledTask handle = queue.add(100, 10, [] { });
        queue.finish(queue.take(100), c.finishedAt);
        EXPECT_EQ(queue.nextDue(), c.expectedNext) << "finished at " << c.finishedAt;
    }
}

TEST(DueQueue, LetsGoOfTheActionAsSoonAsItCannotRunAnyMore)
{
    auto cargo = std::make_shared<int>();
    DueQueue queue;
    ScheduledTask cancelled = queue.add(1, DueQueue::once, [cargo] { });
    ScheduledTask ran = queue.add(2, DueQueue::once, [cargo] { });
    EXPECT_EQ(cargo.use_count(), 3);
    cancelled.cancel();
    EXPECT_EQ(cargo.use_count(), 2);
    queue.finish(queue.take(2), 2);
    EXPECT_EQ(cargo.use_count(), 1);

    ScheduledTask endsItself = queue.add(3, 1, [&] { endsItself.cancel(); });
    auto running = queue.take(3);
    running->run();
    queue.finish(std::move(running), 3);
    EXPECT_EQ(queue.nextDue(), std::nullopt);
}

TEST(DueQueue, AHandleMayOutliveIt)
{
    ScheduledTask handle;
    {
        DueQueue queue;
        handle = queue.add(1, 1, [] { });
    }
    handle.cancel();
    SUCCEED();
}

}  // namespace
}  // namespace quillet
