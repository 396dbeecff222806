// How clean sound stays where it is shaped: a held instant against a repeat of exactly 80 ms. Prints Markdown tables; every
// sound is made here, so that the truth is known.
//
//   quillet-bench-tone-quality [hold]

#include "platform/audio/HoldLoop.h"
#include "platform/audio/TimeStretcher.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <complex>
#include <cstdio>
#include <functional>
#include <numbers>
#include <span>
#include <string_view>
#include <vector>

namespace {

using namespace quillet;

constexpr double pi = std::numbers::pi;
constexpr int sampleRate = 44100;

double decibels(double ratio) { return 20 * std::log10(std::max(ratio, 1e-12)); }

/// Size of the line at `cyclesPerSample` as a part of the sum of the window (Hann).
double line(std::span<const double> samples, double cyclesPerSample)
{
    const std::complex<double> step = std::polar(1.0, -2 * pi * cyclesPerSample);
    std::complex<double> turn = 1;
    std::complex<double> sum = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double hann = 0.5 - 0.5 * std::cos(2 * pi * (static_cast<double>(i) + 0.5) / static_cast<double>(samples.size()));
        sum += samples[i] * hann * turn;
        turn *= step;
    }
    return std::abs(sum) * 2 / static_cast<double>(samples.size());
}

// ---- A held instant ----

struct Partial {
    double hertz = 0;
    double level = 0;
};

struct Sound {
    std::string_view name;
    std::vector<Partial> partials;
    double vibratoCents = 0;
};

constexpr double vibratoHertz = 5.5;

/// Cycles of a partial of 1 Hz at `time`, and their derivative.
double cyclesAt(const Sound& sound, double time)
{
    // The integral of 1 + depth × sin.
    const double depth = std::exp2(sound.vibratoCents / 1200) - 1;
    return time - depth / (2 * pi * vibratoHertz) * std::cos(2 * pi * vibratoHertz * time);
}

float sampleAt(const Sound& sound, double time, int channel)
{
    double sum = 0;
    for (std::size_t i = 0; i < sound.partials.size(); ++i) {
        const auto& partial = sound.partials[i];
        // Left and right differ in each partial's phase and level.
        const double level = partial.level * (channel == 0 ? 1.0 : 0.6 + 0.3 * std::cos(static_cast<double>(i)));
        sum += level * std::sin(2 * pi * partial.hertz * cyclesAt(sound, time) + static_cast<double>(i * i) + 0.7 * channel);
    }
    return static_cast<float>(sum);
}

std::vector<Sound> heldSounds()
{
    std::vector<Sound> sounds{ { "chord of three partials", { { 220, 0.2 }, { 277.18, 0.2 }, { 329.63, 0.2 } } },
                               { "440 Hz", { { 440, 0.5 } } },
                               { "82.4 Hz", { { 82.4, 0.5 } } },
                               { "vibrato, 440 Hz", { { 440, 0.5 } }, 30 },
                               { "string, 110 Hz", {} } };
    for (int i = 1; i <= 14; ++i)
        sounds.back().partials.push_back({ 110.3 * i * std::sqrt(1 + 0.0001 * i * i), 0.35 / i });
    return sounds;
}

std::vector<float> piece(const Sound& sound, double beginSeconds, std::int64_t frames)
{
    std::vector<float> stereo;
    for (std::int64_t i = 0; i < frames; ++i)
        for (int channel = 0; channel < 2; ++channel)
            stereo.push_back(sampleAt(sound, beginSeconds + static_cast<double>(i) / sampleRate, channel));
    return stereo;
}

/// The left channel of `frames` frames of output once the stretcher has settled; at 100 % it is left out.
std::vector<float> heard(const std::function<float(std::int64_t, int)>& source, double rate, std::int64_t frames)
{
    constexpr std::int64_t settling = sampleRate / 2;
    std::vector<float> left;
    if (rate == 1) {
        for (std::int64_t i = 0; i < frames; ++i)
            left.push_back(source(settling + i, 0));
        return left;
    }
    TimeStretcher stretcher(sampleRate);
    stretcher.setRate(rate);
    std::int64_t fed = 0;
    std::vector<float> block;
    while (std::ssize(left) < settling + frames) {
        block.clear();
        for (const std::int64_t end = fed + stretcher.wantedFrames(); fed < end; ++fed)
            for (int channel = 0; channel < 2; ++channel)
                block.push_back(source(fed, channel));
        stretcher.feed(block);
        block.resize(2 * TimeStretcher::maximumBlock);
        while (const std::int64_t count = stretcher.retrieve(block))
            for (std::int64_t i = 0; i < count; ++i)
                left.push_back(block[static_cast<std::size_t>(2 * i)]);
    }
    left.erase(left.begin(), left.begin() + settling);
    left.resize(static_cast<std::size_t>(frames));
    return left;
}

struct Evenness {
    double tremorDb = 0;
    double swingDb = 0;
    double cents = 0;
};

/// The strongest line of the envelope's spectrum between 1.5 and 25 Hz beside its mean: root mean squares, Hann windows of 24
/// ms every 4 ms.
double tremorDb(std::span<const float> samples)
{
    constexpr std::int64_t hop = sampleRate / 250;
    constexpr std::int64_t window = 6 * hop;
    std::vector<double> envelope;
    for (std::int64_t at = 0; at + window <= std::ssize(samples); at += hop) {
        double energy = 0;
        for (std::int64_t i = 0; i < window; ++i) {
            const double value = static_cast<double>(samples[static_cast<std::size_t>(at + i)]);
            energy += value * value * (0.5 - 0.5 * std::cos(2 * pi * (static_cast<double>(i) + 0.5) / window));
        }
        envelope.push_back(std::sqrt(energy));
    }
    double mean = 0;
    for (const double value : envelope)
        mean += value / static_cast<double>(envelope.size());
    for (double& value : envelope)
        value -= mean;
    double strongest = 0;
    for (double hertz = 1.5; hertz <= 25; hertz += 0.1)
        strongest = std::max(strongest, 2 * line(envelope, hertz / 250));
    return decibels(strongest / mean);
}

/// The loudest window of 12 ms beside the softest.
double swingDb(std::span<const float> samples)
{
    constexpr std::int64_t window = sampleRate * 12 / 1000;
    double least = 1e9;
    double most = 0;
    for (std::int64_t at = 0; at + window <= std::ssize(samples); at += window / 4) {
        double energy = 0;
        for (std::int64_t i = at; i < at + window; ++i)
            energy += static_cast<double>(samples[static_cast<std::size_t>(i)]) * samples[static_cast<std::size_t>(i)];
        least = std::min(least, energy);
        most = std::max(most, energy);
    }
    return decibels(std::sqrt(most / least));
}

/// Every 16 frames averaged into one: enough for the lowest partials, and much faster to look through.
constexpr int thinning = 16;
std::vector<double> thinned(std::span<const float> samples)
{
    std::vector<double> thin(samples.size() / thinning);
    for (std::size_t i = 0; i < thin.size() * thinning; ++i)
        thin[i / thinning] += static_cast<double>(samples[i]) / thinning;
    return thin;
}

/// How far the strongest line near `hertz` is from it.
double centsOff(std::span<const double> thin, double hertz)
{
    double best = hertz;
    double bestSize = 0;
    const auto look = [&](double from, double to, double step) {
        for (double tried = from; tried <= to; tried += step)
            if (const double size = line(thin, tried * thinning / sampleRate); size > bestSize) {
                bestSize = size;
                best = tried;
            }
    };
    look(hertz * 0.955, hertz * 1.045, 0.25);
    look(best - 0.25, best + 0.25, 0.02);
    return std::abs(1200 * std::log2(best / hertz));
}

Evenness measured(std::span<const float> samples, std::span<const double> trueHertz)
{
    Evenness evenness{ tremorDb(samples), swingDb(samples), 0 };
    const std::vector<double> thin = thinned(samples);
    for (const double hertz : trueHertz)
        evenness.cents = std::max(evenness.cents, centsOff(thin, hertz));
    return evenness;
}

void printHolds()
{
    for (const int rate : { 44100, 192000 }) {
        std::vector<float> noise(static_cast<std::size_t>(2 * holdSpanFrames(rate)));
        std::uint32_t state = 1;
        for (float& sample : noise)
            sample = static_cast<float>((state = state * 1664525U + 1013904223U) >> 8) / (1U << 23U) - 1;
        const auto begin = std::chrono::steady_clock::now();
        std::int64_t sum = 0;
        for (int i = 0; i < 20; ++i)
            sum += holdLoopLength(noise, holdLeadFrames(rate), rate);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        std::printf("One search at %d Hz: %.2f ms (%.1f ms of noise).\n\n", rate, 1000 * taken.count() / 20,
                    50.0 * static_cast<double>(sum) / rate);
    }
    std::printf(
        "| held sound (worst of 4 places) | speed | sounding on: swing dB | repeat of 80 ms: tremor dB | swing dB | cents "
        "off | loop: tremor dB | swing dB | cents off | shortest to longest loop, ms "
        "|\n|---|---|---|---|---|---|---|---|---|---|\n");
    for (const Sound& sound : heldSounds())
        for (const double rate : { 1.0, 0.5, 0.25 }) {
            Evenness on, naive, loop;
            double shortest = 1;
            double longest = 0;
            for (const double place : { 0.31, 0.777, 1.0071, 1.2345 }) {
                const std::int64_t lead = holdLeadFrames(sampleRate);
                const auto around = piece(sound, place - static_cast<double>(lead) / sampleRate, holdSpanFrames(sampleRate));
                const std::int64_t length = holdLoopLength(around, lead, sampleRate);
                std::vector<float> held(static_cast<std::size_t>(2 * length));
                makeHoldLoop(around, lead, sampleRate, held);
                const double seconds = static_cast<double>(length) / sampleRate;
                shortest = std::min(shortest, seconds);
                longest = std::max(longest, seconds);

                constexpr std::int64_t plainLength = sampleRate * 8 / 100;
                const auto bent = [&](double over) {
                    std::vector<double> hertz;
                    for (std::size_t i = 0; i < std::min<std::size_t>(3, sound.partials.size()); ++i)
                        hertz.push_back(sound.partials[i].hertz * (cyclesAt(sound, place + over) - cyclesAt(sound, place))
                                        / over);
                    return hertz;
                };
                const auto worst = [](Evenness& all, const Evenness& one) {
                    all.tremorDb = all.tremorDb == 0 ? one.tremorDb : std::max(all.tremorDb, one.tremorDb);
                    all.swingDb = std::max(all.swingDb, one.swingDb);
                    all.cents = std::max(all.cents, one.cents);
                };
                constexpr std::int64_t frames = 4 * sampleRate;
                const auto repeated = [](const std::vector<float>& stereo, std::int64_t first, std::int64_t count) {
                    return [&stereo, first, count](std::int64_t frame, int channel) {
                        return stereo[static_cast<std::size_t>(2 * (first + frame % count) + channel)];
                    };
                };
                const auto soundingOn = [&](std::int64_t frame, int channel) {
                    return sampleAt(sound, place + static_cast<double>(frame) / sampleRate, channel);
                };
                on.swingDb = std::max(on.swingDb, swingDb(heard(soundingOn, rate, frames)));
                worst(naive, measured(heard(repeated(around, lead, plainLength), rate, frames), bent(0.08)));
                worst(loop, measured(heard(repeated(held, 0, length), rate, frames), bent(seconds)));
            }
            std::printf("| %s | %.0f %% | %.2f | %.1f | %.1f | %.1f | **%.1f** | **%.2f** | **%.2f** | %.1f to %.1f |\n",
                        sound.name.data(), 100 * rate, on.swingDb, naive.tremorDb, naive.swingDb, naive.cents, loop.tremorDb,
                        loop.swingDb, loop.cents, 1000 * shortest, 1000 * longest);
            std::fflush(stdout);
        }
}

}  // namespace

int main(int argc, char* argv[])
{
    const std::string_view only = argc > 1 ? argv[1] : "";
    if (only.empty() || only == "hold")
        printHolds();
    return 0;
}
