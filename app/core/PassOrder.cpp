#include "app/core/PassOrder.h"

#include <utility>

namespace quillet {

std::vector<UpcomingPass> PassOrder::trained(const TimeRange& region, const Trainer& trainer, std::int64_t number)
{
    std::vector<UpcomingPass> passes;
    const std::int64_t atGoal = trainer.stepCount() * trainer.passesPerStep;
    while (passes.size() < maxChangesAhead) {
        const auto speed = trainer.speedOfPass(number);
        if (!speed)
            break;
        UpcomingPass pass{ .segment = region, .speed = speed, .times = trainer.passesPerStep - number % trainer.passesPerStep };
        pass.number = number;
        if (trainer.atGoal == Trainer::AtGoal::stay && number >= atGoal - trainer.passesPerStep)
            pass.times = UpcomingPass::endless;
        passes.push_back(pass);
        if (pass.times == UpcomingPass::endless)
            break;
        number += pass.times;
    }
    return passes;
}

std::vector<UpcomingPass> PassOrder::called(const NamedLoop& loop, std::size_t index, bool repeats)
{
    std::vector<UpcomingPass> passes{ { .segment = loop.region, .speed = loop.speed } };
    if (loop.trainer && repeats)
        passes = trained(loop.region, *loop.trainer, 0);
    for (UpcomingPass& pass : passes) {
        pass.pitch = loop.pitch;
        pass.loop = index;
    }
    if (!repeats)
        passes.front().times = 1;
    return passes;
}

std::vector<UpcomingPass> PassOrder::listed(const std::vector<NamedLoop>& loops, std::size_t index, std::int64_t number)
{
    std::vector<UpcomingPass> passes;
    if (loops.empty())
        return passes;
    while (passes.size() < maxChangesAhead) {
        index = index < loops.size() ? index : 0;
        const NamedLoop& loop = loops[index];
        if (number < loop.times)
            passes.push_back({ .segment = loop.region,
                               .speed = loop.speed,
                               .pitch = loop.pitch,
                               .times = loop.times - number,
                               .number = number,
                               .loop = index });
        ++index;
        number = 0;
    }
    return passes;
}

}  // namespace quillet
