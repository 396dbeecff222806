#include "platform/base/VectorRegisters.h"

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#endif

namespace quillet {

#if defined(__x86_64__) && defined(__GNUC__)

namespace {

[[gnu::target("avx")]] void zeroUpper() noexcept { _mm256_zeroupper(); }

}  // namespace

void emptyUpperVectorHalves() noexcept
{
    if (__builtin_cpu_supports("avx") != 0)
        zeroUpper();
}

#else

void emptyUpperVectorHalves() noexcept { }

#endif

}  // namespace quillet
