// Makes the GoogleTest case fail in which the real-time guard caught something. Linked, it needs no call.

#include "tests/support/RealtimeGuard.h"

#include <gtest/gtest.h>

namespace quillet {
namespace {

class RealtimeGuardListener : public testing::EmptyTestEventListener {
    void OnTestEnd(const testing::TestInfo&) override
    {
        if (pendingRealtimeViolations() == 0)
            return;
        const std::int64_t count = pendingRealtimeViolations();
        std::string names;
        for (const std::string& function : takeRealtimeViolations())
            names += " " + function;
        ADD_FAILURE() << count << " calls in a real-time scope (stack traces above):" << names;
    }
};

// GoogleTest takes ownership.
[[maybe_unused]] const bool installed = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new RealtimeGuardListener);
    return true;
}();

}  // namespace
}  // namespace quillet
