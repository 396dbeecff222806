// How clean sound stays where it is shaped: a held instant against a repeat of exactly 80 ms, the limiter against clipping, a
// move of the equaliser against a switch. Prints Markdown tables; every sound is made here, so that the truth is known.
//
//   quillet-bench-tone-quality [hold | limiter | equalizer]

#include "platform/audio/Equalizer.h"
#include "platform/audio/HoldLoop.h"
#include "platform/audio/Limiter.h"
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
    stretcher.begin(0, { rate, 0 }, [&source](std::int64_t first, std::span<float> stereo) {
        for (std::size_t i = 0; i < stereo.size(); ++i)
            stereo[i] = first < 0 ? 0 : source(first + static_cast<std::int64_t>(i / 2), static_cast<int>(i % 2));
    });
    std::vector<float> block;
    while (std::ssize(left) < settling + frames) {
        block.clear();
        const std::int64_t first = stretcher.nextFrame();
        for (std::int64_t i = first; i < first + stretcher.wantedFrames(); ++i)
            for (int channel = 0; channel < 2; ++channel)
                block.push_back(source(i, channel));
        stretcher.feed(block);
        block.resize(2 * TimeStretcher::maxBlock);
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
    for (int tenths = 15; tenths <= 250; ++tenths)
        strongest = std::max(strongest, 2 * line(envelope, tenths / 2500.0));
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
        for (int i = 0; from + i * step <= to; ++i) {
            const double tried = from + i * step;
            if (const double size = line(thin, tried * thinning / sampleRate); size > bestSize) {
                bestSize = size;
                best = tried;
            }
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

// ---- Limiter and equaliser ----

/// Four-term Blackman-Harris: what is 4 bins or more away leaks by -92 dB.
double blackmanHarris(double position)
{
    const double angle = 2 * pi * position;
    return 0.35875 - 0.48829 * std::cos(angle) + 0.14128 * std::cos(2 * angle) - 0.01168 * std::cos(3 * angle);
}

std::vector<double> windowed(std::span<const float> samples)
{
    std::vector<double> seen;
    for (std::size_t i = 0; i < samples.size(); ++i)
        seen.push_back(static_cast<double>(samples[i])
                       * blackmanHarris((static_cast<double>(i) + 0.5) / static_cast<double>(samples.size())));
    return seen;
}

double bin(std::span<const double> seen, double cyclesPerSample)
{
    const std::complex<double> step = std::polar(1.0, -2 * pi * cyclesPerSample);
    std::complex<double> turn = 1;
    std::complex<double> sum = 0;
    for (const double value : seen) {
        sum += value * turn;
        turn *= step;
    }
    return std::abs(sum);
}

std::vector<float> stereoTone(double hertz, double level, int rate, double seconds)
{
    std::vector<float> stereo;
    for (std::int64_t i = 0; i < static_cast<std::int64_t>(seconds * rate); ++i)
        stereo.insert(stereo.end(), 2, static_cast<float>(level * std::sin(2 * pi * hertz * static_cast<double>(i) / rate)));
    return stereo;
}

std::vector<float> left(std::span<const float> stereo)
{
    std::vector<float> samples;
    for (std::size_t i = 0; i < stereo.size(); i += 2)
        samples.push_back(stereo[i]);
    return samples;
}

void printLimiter()
{
    std::printf(
        "\n| limiter, 6 dB over full scale | third harmonic dB | strongest other line dB | clipped: third harmonic dB | "
        "strongest other line dB |\n|---|---|---|---|---|\n");
    for (const int rate : { 44100, 192000 })
        for (const double hertz : { 30.0, 60.0, 61.7, 100.0 }) {
            auto limited = stereoTone(hertz, 2, rate, 2);
            auto clipped = limited;
            for (float& sample : clipped)
                sample = std::clamp(sample, -1.0F, 1.0F);
            Limiter().process(limited, true);
            std::printf("| %.1f Hz at %d Hz |", hertz, rate);
            for (const auto* stereo : { &limited, &clipped }) {
                const auto seen = windowed(left(std::span(*stereo).last(static_cast<std::size_t>(2 * rate))));
                const double tone = bin(seen, hertz / rate);
                double other = 0;
                for (int tried = 5; tried < 5.5 * hertz; ++tried)
                    if (std::abs(tried - hertz) > 5 && std::abs(tried - 3 * hertz) > 5 && std::abs(tried - 5 * hertz) > 5)
                        other = std::max(other, bin(seen, static_cast<double>(tried) / rate));
                std::printf(" %.1f | %.1f |", decibels(bin(seen, 3 * hertz / rate) / tone), decibels(other / tone));
            }
            std::printf("\n");
        }
}

/// The largest bin farther than `distanceHertz` from the tone in any window of 100 ms within 250 ms around the change, beside
/// the tone at its loudest.
double splatterDb(std::span<const float> samples, double hertz, double distanceHertz, int rate)
{
    const std::int64_t window = rate / 10;
    double tone = 0;
    double away = 0;
    for (std::int64_t at = std::ssize(samples) / 2 - rate / 8; at < std::ssize(samples) / 2 + rate / 8 - window;
         at += rate / 200) {
        const auto seen = windowed(samples.subspan(static_cast<std::size_t>(at), static_cast<std::size_t>(window)));
        tone = std::max(tone, bin(seen, hertz / rate));
        for (int tried = 20; tried < 6000; tried += 10)
            if (std::abs(tried - hertz) >= distanceHertz)
                away = std::max(away, bin(seen, static_cast<double>(tried) / rate));
    }
    return decibels(away / tone);
}

void printEqualizer()
{
    std::printf("\n| band of 1000 Hz moved under a tone | beyond 100 Hz from it: glide dB | switch dB | beyond 200 Hz: glide "
                "dB | switch dB | 99 %% "
                "of the way after |\n|---|---|---|---|---|---|\n");
    struct Move {
        double hertz, fromDb, toDb;
        int rate;
    };
    for (const Move& move : { Move{ 1000, 0, 12, 44100 }, Move{ 440, 0, 12, 44100 }, Move{ 1000, 12, 0, 44100 },
                              Move{ 1000, -12, 12, 44100 }, Move{ 1000, 0, 12, 192000 }, Move{ 1000, 0, 12, 8000 } }) {
        const auto gains = [&](double decibels) { return separatedGains({ 0, 0, decibels, 0, 0 }, move.rate); };
        const auto source = stereoTone(move.hertz, 0.2, move.rate, 2);
        const std::size_t half = source.size() / 2;
        Equalizer moved, before, after;
        moved.setGains(gains(move.fromDb), move.rate);
        before.setGains(gains(move.fromDb), move.rate);
        after.setGains(gains(move.toDb), move.rate);
        auto glided = source;
        auto switched = source;
        auto end = source;
        before.process(switched);
        after.process(end);
        std::copy(end.begin() + static_cast<std::ptrdiff_t>(half), end.end(),
                  switched.begin() + static_cast<std::ptrdiff_t>(half));
        constexpr std::size_t block = 64;
        for (std::size_t at = 0; at < glided.size(); at += block) {
            if (at >= half)
                moved.setGains(gains(move.toDb), move.rate);
            moved.process(std::span(glided).subspan(at, std::min(block, glided.size() - at)));
        }
        // The last frame that is more than 1 % of the way from where it ends.
        const auto one = left(glided);
        const auto other = left(end);
        const auto old = left(switched);
        double largest = 0;
        double way = 0;
        for (std::size_t i = one.size() / 4; i < one.size() / 2; ++i)
            way = std::max(way, static_cast<double>(std::abs(old[i] - other[i])));
        const std::size_t change = half / 2;
        for (std::size_t i = change; i < one.size(); ++i)
            if (std::abs(one[i] - other[i]) > 0.01 * way)
                largest = static_cast<double>(i - change) / move.rate;
        std::printf("| %.0f Hz, %+.0f to %+.0f dB, at %d Hz |", move.hertz, move.fromDb, move.toDb, move.rate);
        for (const double distance : { 100.0, 200.0 })
            std::printf(" **%.1f** | %.1f |", splatterDb(one, move.hertz, distance, move.rate),
                        splatterDb(old, move.hertz, distance, move.rate));
        std::printf(" %.0f ms |\n", 1000 * largest);
        std::fflush(stdout);
    }
}

}  // namespace

int main(int argc, char* argv[])
{
    const std::string_view only = argc > 1 ? argv[1] : "";
    if (only.empty() || only == "hold")
        printHolds();
    if (only.empty() || only == "limiter")
        printLimiter();
    if (only.empty() || only == "equalizer")
        printEqualizer();
    return 0;
}
