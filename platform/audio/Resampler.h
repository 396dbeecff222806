// Brings a stereo signal from one sample rate to another (libsoxr, linear phase): output frame n is the input at n × from / to,
// counted from the first frame after `reset`, without a delay of its own; it only asks for what comes after. Images and aliases
// lie 120 dB down and more.
// Threads: one at a time; allocates at construction and in `reset`.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

namespace quillet {

class Resampler {
public:
    /// Rates in Hz.
    Resampler(int fromRate, int toRate);
    ~Resampler();
    Resampler(const Resampler&) = delete;
    Resampler& operator=(const Resampler&) = delete;

    /// Ready for another signal.
    void reset();

    struct Counts {
        std::int64_t taken = 0;
        std::int64_t made = 0;
    };
    /// Takes frames from `input` and makes frames into `output`, as many as either allows.
    Counts process(std::span<const float> input, std::span<float> output);

private:
    struct Engine;
    std::unique_ptr<Engine> m_engine;
};

}  // namespace quillet
