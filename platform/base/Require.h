// REQUIRE: the check of a programming error. A broken REQUIRE prints one line and ends the program, in every build; it is
// never the answer to bad input, a missing file or a failing device.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace quillet {

[[noreturn]] inline void requirementBroken(const char* condition, const char* file, int line) noexcept
{
    std::fprintf(stderr, "%s:%d: requirement broken: %s\n", file, line, condition);
    std::abort();
}

}  // namespace quillet

#define REQUIRE(condition) ((condition) ? void(0) : ::quillet::requirementBroken(#condition, __FILE__, __LINE__))
