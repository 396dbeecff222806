// The speeds of a practice that grows: from one speed to another by steps, some passes at each. It counts passes and knows
// nothing of what is played.
// Threads: a value, no shared state.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

namespace quillet {

struct Trainer {
    enum class AtGoal { stay, stop, startOver };

    static constexpr std::int64_t maxPasses = 99;
    /// Of the step, percent.
    static constexpr double minStep = 0.1;
    static constexpr double maxStep = 100;

    /// Percent; the goal may be the slower one.
    double fromSpeed = 60;
    double goalSpeed = 100;
    /// Percent, `minStep` to `maxStep`, whichever way the goal lies.
    double stepSize = 5;
    /// At each speed, 1 to `maxPasses`.
    std::int64_t passesPerStep = 4;
    /// What follows when as many passes have been played at the goal.
    AtGoal atGoal = AtGoal::stay;

    bool operator==(const Trainer&) const = default;

    /// Of different speeds, at least 1.
    [[nodiscard]] std::int64_t stepCount() const
    {
        return 1 + static_cast<std::int64_t>(std::ceil(std::abs(goalSpeed - fromSpeed) / stepSize - 1e-9));
    }

    /// In percent, of pass `number`, counted from 0; nothing after the last one.
    [[nodiscard]] std::optional<double> speedOfPass(std::int64_t number) const
    {
        std::int64_t step = number / passesPerStep;
        if (step >= stepCount()) {
            if (atGoal == AtGoal::stop)
                return std::nullopt;
            step = atGoal == AtGoal::stay ? stepCount() - 1 : step % stepCount();
        }
        const double way = std::min(stepSize * static_cast<double>(step), std::abs(goalSpeed - fromSpeed));
        return goalSpeed < fromSpeed ? fromSpeed - way : fromSpeed + way;
    }
};

}  // namespace quillet
