#include "AppCore/TimeRuler.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace quillet {
namespace {

/// Between two labels, and the small steps that it is divided into. In milliseconds, which the counting is exact in.
struct Step {
    std::int64_t label;
    std::int64_t small;
    int decimals;
};

constexpr std::array steps{
    Step{ 10, 2, 2 },
    Step{ 20, 5, 2 },
    Step{ 50, 10, 2 },
    Step{ 100, 20, 1 },
    Step{ 200, 50, 1 },
    Step{ 500, 100, 1 },
    Step{ 1'000, 200, 0 },
    Step{ 2'000, 500, 0 },
    Step{ 5'000, 1'000, 0 },
    Step{ 10'000, 2'000, 0 },
    Step{ 20'000, 5'000, 0 },
    Step{ 30'000, 5'000, 0 },
    Step{ 60'000, 10'000, 0 },
    Step{ 120'000, 30'000, 0 },
    Step{ 300'000, 60'000, 0 },
    Step{ 600'000, 120'000, 0 },
    Step{ 1'200'000, 300'000, 0 },
    Step{ 1'800'000, 300'000, 0 },
    Step{ 3'600'000, 600'000, 0 },
    Step{ 7'200'000, 1'800'000, 0 },
};

std::string labelOf(std::int64_t milliseconds, int decimals)
{
    std::array<char, 40> text{};
    const long long minutes = milliseconds / 60'000;
    const int rest = static_cast<int>(milliseconds % 60'000);
    if (decimals == 0)
        std::snprintf(text.data(), text.size(), "%lld:%02d", minutes, rest / 1000);
    else
        std::snprintf(text.data(), text.size(), "%lld:%02d.%0*d", minutes, rest / 1000, decimals,
                      rest % 1000 / (decimals == 1 ? 100 : 10));
    return text.data();
}

}  // namespace

std::vector<RulerTick> rulerTicks(const WaveformCoordinates& coordinates, double labelSpacing)
{
    const double width = coordinates.viewWidth * coordinates.zoomLevel;
    if (coordinates.duration <= 0 || coordinates.viewWidth <= 0)
        return {};
    const double millisecondsPerPoint = 1000 * coordinates.duration / width;
    const auto isWideEnough = [&](const Step& step) {
        return static_cast<double>(step.label) >= labelSpacing * millisecondsPerPoint;
    };
    const auto found = std::ranges::find_if(steps, isWideEnough);
    const Step& step = found != steps.end() ? *found : steps.back();

    const auto first = static_cast<std::int64_t>(std::ceil(1000 * coordinates.xToTime(0) / static_cast<double>(step.small)));
    const auto last = static_cast<std::int64_t>(
        std::floor(1000 * coordinates.xToTime(coordinates.viewWidth) / static_cast<double>(step.small)));
    std::vector<RulerTick> ticks;
    for (std::int64_t i = first; i <= last; ++i) {
        const std::int64_t time = i * step.small;
        ticks.push_back({ coordinates.timeToX(static_cast<double>(time) / 1000),
                          time % step.label == 0 ? labelOf(time, step.decimals) : std::string() });
    }
    return ticks;
}

}  // namespace quillet
