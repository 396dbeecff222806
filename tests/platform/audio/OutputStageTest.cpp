#include "platform/audio/OutputStage.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace quillet {
namespace {

TEST(OutputStage, WhatGoesOnInAnotherRunHasNoBreakHoweverLittleThereIsToCrossFrom)
{
    constexpr std::int64_t block = 4096;
    constexpr float level = 0.5F;
    for (const std::int64_t left : { 0, 30, 1000 }) {
        SCOPED_TRACE(left);
        WakeSemaphore renderer;
        const auto stage = std::make_unique<OutputStage>(renderer);
        const auto begin = [&](std::int64_t generation, std::int64_t alignedFrame, std::int64_t frames) {
            ASSERT_TRUE(stage->marks().push(
                { OutputMark::Kind::runBegin, stage->ring().written(), generation, 64, 44100, alignedFrame }));
            const std::vector<float> sound(static_cast<std::size_t>(2 * frames), level);
            stage->ring().write(sound);
            stage->enterRun(generation);
        };
        std::vector<float> heard(2 * block);
        begin(1, -1, block + left);
        stage->render(heard);
        begin(2, block, 2 * block);
        stage->render(heard);
        for (const float sample : heard)
            ASSERT_NEAR(sample, level, 1e-6F);
    }
}

}  // namespace
}  // namespace quillet
