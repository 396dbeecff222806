#include "AppCore/TimeIntervalComponents.h"

#include "AppCore/TypedNumber.h"

namespace quillet {

TimeIntervalComponents TimeIntervalComponents::fromSeconds(double seconds)
{
    const std::int64_t total = integerPart(seconds * 1000);
    return { total / 60000, total / 1000 % 60, total % 1000 };
}

double TimeIntervalComponents::asTimeInterval() const
{
    return static_cast<double>(minutes) * 60 + static_cast<double>(seconds) + static_cast<double>(milliseconds) / 1000;
}

}  // namespace quillet
