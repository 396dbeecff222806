#include "platform/audio/Resampler.h"

#include "platform/base/Require.h"

#include <soxr.h>

namespace quillet {

struct Resampler::Engine {
    struct Deleter {
        void operator()(soxr_t handle) const { soxr_delete(handle); }
    };
    std::unique_ptr<std::remove_pointer_t<soxr_t>, Deleter> soxr;
};

Resampler::Resampler(int fromRate, int toRate)
    : m_engine(std::make_unique<Engine>())
{
    const soxr_io_spec_t interleaved = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
    const soxr_runtime_spec_t oneThread = soxr_runtime_spec(1);
    soxr_error_t error = nullptr;
    m_engine->soxr.reset(soxr_create(fromRate, toRate, 2, &error, &interleaved, &quality, &oneThread));
    // It refuses nothing but rates that are no rates, and a machine without memory.
    REQUIRE(error == nullptr && m_engine->soxr != nullptr);
}

Resampler::~Resampler() = default;

void Resampler::reset() { REQUIRE(soxr_clear(m_engine->soxr.get()) == nullptr); }

Resampler::Counts Resampler::process(std::span<const float> input, std::span<float> output)
{
    std::size_t taken = 0;
    std::size_t made = 0;
    const float none = 0;
    // A null input would mean that the signal ends.
    REQUIRE(soxr_process(m_engine->soxr.get(), input.empty() ? &none : input.data(), input.size() / 2, &taken, output.data(),
                         output.size() / 2, &made)
            == nullptr);
    return { static_cast<std::int64_t>(taken), static_cast<std::int64_t>(made) };
}

}  // namespace quillet
