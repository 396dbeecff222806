#include "platform/schedule/VirtualScheduler.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillet {
namespace {

TEST(VirtualScheduler, EverythingRunsAtItsOwnTime)
{
    VirtualScheduler scheduler;
    std::vector<double> times;
    const auto note = [&] { times.push_back(scheduler.nowSeconds()); };
    ScheduledTask chained;
    const ScheduledTask ticking = scheduler.every(0.25, note);
    const ScheduledTask first = scheduler.after(0.375, [&] {
        note();
        chained = scheduler.after(0.25, note);
    });
    scheduler.advance(0.75);
    EXPECT_EQ(times, (std::vector{ 0.25, 0.375, 0.5, 0.625, 0.75 }));
    EXPECT_EQ(scheduler.nowSeconds(), 0.75);
}

TEST(VirtualScheduler, StepsAddUpExactly)
{
    for (const auto& [step, count] : { std::pair(0.05, 6), std::pair(0.1, 3), std::pair(0.001, 300) }) {
        VirtualScheduler scheduler;
        bool ran = false;
        const ScheduledTask task = scheduler.after(0.3, [&] { ran = true; });
        for (int i = 0; i < count; ++i) {
            EXPECT_FALSE(ran) << step;
            scheduler.advance(step);
        }
        EXPECT_TRUE(ran) << step;
    }
}

TEST(VirtualScheduler, WhatIsPostedRunsBeforeTimeGoesOn)
{
    VirtualScheduler scheduler;
    std::string order;
    const ScheduledTask early = scheduler.after(0.1, [&] {
        order += 'a';
        scheduler.post([&] { order += 'b'; });
    });
    const ScheduledTask later = scheduler.after(0.2, [&] { order += 'c'; });
    scheduler.advance(1);
    EXPECT_EQ(order, "abc");
    scheduler.post([&] { order += 'd'; });
    scheduler.advance(0);
    EXPECT_EQ(order, "abcd");
}

}  // namespace
}  // namespace quillet
