// How close the stretcher comes to music that was played slower or higher in the first place: made-up music with chords, bass
// and drums across the stereo image, and a voice of sung vowels, each synthesised again at the other tempo or pitch as the
// truth. The variants compared stand in a table below. Prints Markdown tables.
//
//   quillet-bench-stretch-quality [tempo | voice]

#include <rubberband/RubberBandStretcher.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <numbers>
#include <random>
#include <span>
#include <string_view>
#include <vector>

namespace {

using RubberBand::RubberBandStretcher;

constexpr double pi = std::numbers::pi;
constexpr int sampleRate = 44100;
constexpr double songSeconds = 4;

constexpr int realTime = RubberBandStretcher::OptionProcessRealTime | RubberBandStretcher::OptionEngineFiner
    | RubberBandStretcher::OptionPitchHighConsistency | RubberBandStretcher::OptionThreadingNever;
constexpr int together = RubberBandStretcher::OptionChannelsTogether;
constexpr int formants = RubberBandStretcher::OptionFormantPreserved;

enum class Channels { leftRight, midSide };

struct Variant {
    const char* name;
    Channels channels;
    int options;
    /// 2 stretches twice by the root of the ratio.
    int passes = 1;
    /// Leaves this much from each attack on (which it is told of) as long as it was, and stretches the rest the more.
    double keptAttackSeconds = 0;
    /// Gives the side the level beside the mid that it had, window by window.
    bool imageRestored = false;
};

constexpr std::array tempoVariants{
    Variant{ "left/right, together", Channels::leftRight, realTime | together },
    Variant{ "left/right, apart", Channels::leftRight, realTime },
    Variant{ "left/right, together, image restored", Channels::leftRight, realTime | together, 1, 0, true },
    Variant{ "left/right, apart, image restored", Channels::leftRight, realTime, 1, 0, true },
    Variant{ "mid/side, together", Channels::midSide, realTime | together },
    Variant{ "mid/side, apart", Channels::midSide, realTime },
    Variant{ "mid/side, apart, in two passes", Channels::midSide, realTime, 2 },
    Variant{ "left/right, together, attacks kept 20 ms", Channels::leftRight, realTime | together, 1, 0.02 },
    Variant{ "left/right, apart, image restored, attacks kept 20 ms", Channels::leftRight, realTime, 1, 0.02, true },
};

using Channel = std::vector<double>;
using Stereo = std::array<Channel, 2>;

double decibels(double ratio) { return 20 * std::log10(std::max(ratio, 1e-9)); }

// ---- The music ----

/// Adds a sound to the music: `shape(seconds)` from `begin` on, with its pan from -1 to 1.
template <typename Shape> void add(Stereo& music, double begin, double lasting, double pan, Shape shape)
{
    const double angle = (pan + 1) * pi / 4;
    const auto first = static_cast<std::int64_t>(begin * sampleRate);
    for (std::int64_t i = 0; i < static_cast<std::int64_t>(lasting * sampleRate); ++i) {
        if (first + i >= std::ssize(music[0]))
            return;
        const double value = shape(static_cast<double>(i) / sampleRate);
        music[0][static_cast<std::size_t>(first + i)] += value * std::cos(angle);
        music[1][static_cast<std::size_t>(first + i)] += value * std::sin(angle);
    }
}

void addPluck(Stereo& music, double begin, double slower, double pan, double hertz, double level)
{
    add(music, begin * slower, 1.5 * slower, pan, [=](double time) {
        double sum = 0;
        for (int k = 1; k <= 10; ++k)
            sum += level / k * std::exp(-time / slower * (1.5 + k)) * std::sin(2 * pi * hertz * k * time + k);
        return sum * std::min(1.0, time / 0.002);
    });
}

constexpr double drumSpacing = 0.25;

Stereo music(double slower)
{
    Stereo music;
    for (auto& channel : music)
        channel.resize(static_cast<std::size_t>(songSeconds * slower * sampleRate));
    constexpr double chords[][3] = {
        { 220, 277.18, 329.63 }, { 174.61, 220, 261.63 }, { 196, 246.94, 293.66 }, { 164.81, 207.65, 246.94 }
    };
    for (int beat = 0; beat < static_cast<int>(songSeconds / 0.5); ++beat) {
        const auto& chord = chords[beat / 2 % 4];
        const double begin = 0.5 * beat + 0.06;
        addPluck(music, begin, slower, 0, chord[0] / 2, 0.25);
        addPluck(music, begin + 0.125, slower, -0.7, chord[0], 0.1);
        addPluck(music, begin + 0.125, slower, 0.2, chord[1], 0.1);
        addPluck(music, begin + 0.375, slower, 0.8, chord[2] * 2, 0.1);
    }
    std::mt19937 random(11);
    std::uniform_real_distribution<double> value(-1, 1);
    for (int stroke = 0; stroke < static_cast<int>(songSeconds / drumSpacing); ++stroke) {
        // Each stroke's noise has its own seed, so that it begins alike at every tempo.
        random.seed(static_cast<unsigned>(stroke));
        const double begin = drumSpacing * stroke + 0.06;
        const double decay = (stroke % 4 == 2 ? 0.06 : 0.02) * slower;
        const double level = stroke % 4 == 2 ? 0.4 : 0.25;
        add(music, begin * slower, 8 * decay, stroke % 2 == 0 ? 0.1 : 0.6,
            [&](double time) { return level * std::exp(-time / decay) * value(random); });
    }
    return music;
}

/// Two sung vowels and back, their formants the same whatever the pitch.
Stereo voice(double pitch)
{
    struct Vowel {
        double hertz[4];
    };
    constexpr Vowel vowels[] = { { 730, 1090, 2440, 3400 }, { 270, 2290, 3010, 3700 } };
    constexpr double level[4] = { 1, 0.5, 0.25, 0.12 };
    Stereo voice;
    double cycles = 0;
    for (std::int64_t i = 0; i < static_cast<std::int64_t>(songSeconds * sampleRate); ++i) {
        const double time = static_cast<double>(i) / sampleRate;
        const double hertz = 165 * pitch * (1 + 0.006 * std::sin(2 * pi * 5 * time));
        cycles += hertz / sampleRate;
        const double blend = 0.5 - 0.5 * std::cos(2 * pi * 0.5 * time);
        double sum = 0;
        for (int k = 1; k * hertz < 5000; ++k) {
            double envelope = 0;
            for (int f = 0; f < 4; ++f) {
                const double centre = vowels[0].hertz[f] * (1 - blend) + vowels[1].hertz[f] * blend;
                const double off = (k * hertz - centre) / (60 + 0.03 * centre);
                envelope += level[f] / (1 + off * off);
            }
            sum += envelope / std::sqrt(k) * std::sin(2 * pi * k * cycles);
        }
        for (auto& channel : voice)
            channel.push_back(0.2 * sum);
    }
    return voice;
}

// ---- The stretcher ----

Stereo turned(const Stereo& stereo)
{
    Stereo other = stereo;
    for (std::size_t i = 0; i < stereo[0].size(); ++i) {
        other[0][i] = (stereo[0][i] + stereo[1][i]) * std::numbers::sqrt2 / 2;
        other[1][i] = (stereo[0][i] - stereo[1][i]) * std::numbers::sqrt2 / 2;
    }
    return other;
}

/// The ratio at a place in the source: 1 while an attack is kept, and as much more elsewhere.
double ratioAt(const Variant& variant, double ratio, double seconds)
{
    if (variant.keptAttackSeconds == 0 || ratio < 1)
        return ratio;
    const double sinceAttack = std::fmod(seconds - 0.06 + 0.005 + drumSpacing, drumSpacing);
    return sinceAttack < variant.keptAttackSeconds
        ? 1
        : (ratio * drumSpacing - variant.keptAttackSeconds) / (drumSpacing - variant.keptAttackSeconds);
}

Stereo stretchedOnce(const Stereo& source, const Variant& variant, double ratio, double pitch)
{
    constexpr std::int64_t block = 256;
    RubberBandStretcher stretcher(sampleRate, 2, variant.options, ratio, pitch);
    stretcher.setMaxProcessSize(4096);
    const auto pad = static_cast<std::int64_t>(stretcher.getPreferredStartPad());
    const auto delay = static_cast<std::ptrdiff_t>(stretcher.getStartDelay());
    const auto wanted = static_cast<std::int64_t>(ratio * static_cast<double>(source[0].size()));
    Stereo result;
    std::array<std::vector<float>, 2> buffers{ std::vector<float>(4096), std::vector<float>(4096) };
    const std::array<float*, 2> channels{ buffers[0].data(), buffers[1].data() };
    for (std::int64_t fed = -pad; std::ssize(result[0]) < wanted + delay; fed += block) {
        for (std::size_t channel = 0; channel < 2; ++channel)
            for (std::int64_t i = 0; i < block; ++i) {
                const std::int64_t frame = fed + i;
                const bool exists = frame >= 0 && frame < std::ssize(source[channel]);
                buffers[channel][static_cast<std::size_t>(i)] =
                    exists ? static_cast<float>(source[channel][static_cast<std::size_t>(frame)]) : 0;
            }
        // A block fed now is in the middle of the stretcher's window half a window later.
        if (variant.keptAttackSeconds > 0)
            stretcher.setTimeRatio(ratioAt(variant, ratio, static_cast<double>(fed - pad + block) / sampleRate));
        stretcher.process(channels.data(), block, false);
        while (stretcher.available() > 0) {
            const std::size_t count =
                stretcher.retrieve(channels.data(), static_cast<std::size_t>(std::min(stretcher.available(), 4096)));
            for (std::size_t channel = 0; channel < 2; ++channel)
                result[channel].insert(result[channel].end(), buffers[channel].begin(),
                                       buffers[channel].begin() + static_cast<std::ptrdiff_t>(count));
        }
    }
    for (auto& channel : result) {
        channel.erase(channel.begin(), channel.begin() + delay);
        channel.resize(static_cast<std::size_t>(wanted));
    }
    return result;
}

/// Scales the side so that, in windows of 100 ms, it stands to the mid as it does in the source.
void restoreImage(Stereo& sound, const Stereo& source)
{
    Stereo heard = turned(sound);
    const Stereo truth = turned(source);
    const auto part = [](const Stereo& midSide, double middle) {
        constexpr double width = 0.1 * sampleRate;
        std::array<double, 2> energies{ 1e-6, 1e-6 };
        const auto size = std::ssize(midSide[0]);
        const auto end = std::min(size, static_cast<std::ptrdiff_t>(middle + width / 2));
        for (auto i = std::max<std::ptrdiff_t>(0, static_cast<std::ptrdiff_t>(middle - width / 2)); i < end; ++i)
            for (std::size_t channel = 0; channel < 2; ++channel) {
                const double value = midSide[channel][static_cast<std::size_t>(i)];
                energies[channel] += value * value;
            }
        return std::sqrt(energies[1] / energies[0]);
    };
    const double ratio = static_cast<double>(heard[0].size()) / static_cast<double>(truth[0].size());
    constexpr std::size_t hop = sampleRate / 50;
    std::vector<double> gains;
    for (std::size_t at = 0; at <= heard[0].size() + hop; at += hop)
        gains.push_back(
            std::clamp(part(truth, static_cast<double>(at) / ratio) / part(heard, static_cast<double>(at)), 0.5, 2.0));
    for (std::size_t i = 0; i < heard[1].size(); ++i)
        heard[1][i] *= std::lerp(gains[i / hop], gains[i / hop + 1], static_cast<double>(i % hop) / hop);
    sound = turned(heard);
}

Stereo stretched(const Stereo& source, const Variant& variant, double ratio, double pitch)
{
    Stereo sound = variant.channels == Channels::midSide ? turned(source) : source;
    for (int pass = 0; pass < variant.passes; ++pass)
        sound = stretchedOnce(sound, variant, std::pow(ratio, 1.0 / variant.passes), pitch);
    if (variant.channels == Channels::midSide)
        sound = turned(sound);
    if (variant.imageRestored)
        restoreImage(sound, source);
    return sound;
}

// ---- The measures ----

constexpr std::int64_t windowFrames = 2048;

/// exp(-2πi k / windowFrames).
std::vector<std::complex<double>> madeTurns()
{
    std::vector<std::complex<double>> turns;
    for (std::int64_t k = 0; k < windowFrames; ++k)
        turns.push_back(std::polar(1.0, -2 * pi * static_cast<double>(k) / windowFrames));
    return turns;
}

/// The Fourier transform of windowFrames values, or of a power of two that divides it.
void transform(std::span<std::complex<double>> values)
{
    static const std::vector<std::complex<double>> turns = madeTurns();
    const std::size_t count = values.size();
    if (count == 1)
        return;
    std::vector<std::complex<double>> even(count / 2), odd(count / 2);
    for (std::size_t i = 0; i < count / 2; ++i) {
        even[i] = values[2 * i];
        odd[i] = values[2 * i + 1];
    }
    transform(even);
    transform(odd);
    for (std::size_t i = 0; i < count / 2; ++i) {
        const auto turn = turns[i * windowFrames / count] * odd[i];
        values[i] = even[i] + turn;
        values[i + count / 2] = even[i] - turn;
    }
}

/// The power in dB of each bin to 10 kHz, not below 60 dB under a full sine.
std::vector<double> spectrumDb(const Channel& sound, std::int64_t first)
{
    std::vector<std::complex<double>> values(windowFrames);
    for (std::int64_t i = 0; i < windowFrames; ++i)
        if (first + i >= 0 && first + i < std::ssize(sound))
            values[static_cast<std::size_t>(i)] = sound[static_cast<std::size_t>(first + i)]
                * (0.5 - 0.5 * std::cos(2 * pi * static_cast<double>(i) / windowFrames));
    transform(values);
    std::vector<double> powers;
    for (std::int64_t i = 1; i < windowFrames * 10000 / sampleRate; ++i)
        powers.push_back(decibels(std::max(std::abs(values[static_cast<std::size_t>(i)]) * 4 / windowFrames, 1e-3)));
    return powers;
}

/// The mean over time of the root mean square over bins of the difference in dB; `late` frames of `heard` are left out.
double logSpectralDistance(const Channel& heard, const Channel& truth, std::int64_t late, std::int64_t hop)
{
    double sum = 0;
    int windows = 0;
    for (std::int64_t at = windowFrames; at + 2 * windowFrames < std::ssize(truth); at += hop, ++windows) {
        const auto one = spectrumDb(heard, at + late);
        const auto other = spectrumDb(truth, at);
        double square = 0;
        for (std::size_t i = 0; i < one.size(); ++i)
            square += (one[i] - other[i]) * (one[i] - other[i]);
        sum += std::sqrt(square / static_cast<double>(one.size()));
    }
    return sum / windows;
}

/// By how many frames `heard` comes late at which it is most like the truth.
std::int64_t lateness(const Channel& heard, const Channel& truth)
{
    std::int64_t best = 0;
    double least = 1e9;
    for (const std::int64_t step : { 256, 64, 16 }) {
        const std::int64_t around = best;
        for (std::int64_t tried = around - 5 * step; tried <= around + 5 * step; tried += step)
            if (const double distance = logSpectralDistance(heard, truth, tried, 6007); distance < least) {
                least = distance;
                best = tried;
            }
    }
    return best;
}

double energy(const Channel& sound)
{
    double sum = 0;
    for (const double value : sound)
        sum += value * value;
    return sum;
}

double sideToMidDb(const Stereo& stereo)
{
    const Stereo midSide = turned(stereo);
    return decibels(std::sqrt(energy(midSide[1]) / energy(midSide[0])));
}

/// How many dB the sound rises at a stroke: the loudest 2 ms near it beside the 40 ms before, mean of all strokes.
double riseDb(const Channel& sound, double slower, std::int64_t late)
{
    const auto level = [&](std::int64_t first, std::int64_t count) {
        double sum = 1e-9;
        for (std::int64_t i = std::max<std::int64_t>(0, first); i < std::min(first + count, std::ssize(sound)); ++i)
            sum += sound[static_cast<std::size_t>(i)] * sound[static_cast<std::size_t>(i)];
        return std::sqrt(sum / static_cast<double>(count));
    };
    constexpr std::int64_t millisecond = sampleRate / 1000;
    double rise = 0;
    constexpr int strokes = static_cast<int>(songSeconds / drumSpacing) - 2;
    for (int stroke = 1; stroke <= strokes; ++stroke) {
        const auto begin = static_cast<std::int64_t>((drumSpacing * stroke + 0.06) * slower * sampleRate) + late;
        double loudest = 0;
        for (std::int64_t at = -15; at <= 20; ++at)
            loudest = std::max(loudest, level(begin + at * millisecond, 2 * millisecond));
        rise += decibels(loudest / level(begin - 60 * millisecond, 40 * millisecond)) / strokes;
    }
    return rise;
}

void printTempo()
{
    std::printf("| variant | log-spectral distance, dB, at 2x / 4x / 1.5x faster | side to mid, dB off | rise of the attacks, "
                "dB off |\n"
                "|---|---|---|---|\n");
    for (const Variant& variant : tempoVariants) {
        std::array<double, 3> distance{}, image{}, rise{};
        constexpr std::array ratios{ 2.0, 4.0, 2.0 / 3 };
        const Stereo source = music(1);
        for (std::size_t i = 0; i < ratios.size(); ++i) {
            const Stereo truth = music(ratios[i]);
            const Stereo heard = stretched(source, variant, ratios[i], 1);
            const std::int64_t late = lateness(turned(heard)[0], turned(truth)[0]);
            for (std::size_t channel = 0; channel < 2; ++channel) {
                distance[i] += logSpectralDistance(heard[channel], truth[channel], late, 512) / 2;
                rise[i] += (riseDb(heard[channel], ratios[i], late) - riseDb(truth[channel], ratios[i], 0)) / 2;
            }
            image[i] = sideToMidDb(heard) - sideToMidDb(truth);
        }
        std::printf("| %s | %.2f / %.2f / %.2f | %+.1f / %+.1f / %+.1f | %+.1f / %+.1f / %+.1f |\n", variant.name, distance[0],
                    distance[1], distance[2], image[0], image[1], image[2], rise[0], rise[1], rise[2]);
        std::fflush(stdout);
    }
}

void printVoice()
{
    std::printf(
        "\n| voice moved by, semitones | log-spectral distance, dB: formants moved | formants preserved |\n|---|---|---|\n");
    for (const int semitones : { -7, -3, 3, 7 }) {
        const double pitch = std::exp2(semitones / 12.0);
        std::printf("| %+d |", semitones);
        for (const int more : { 0, formants }) {
            const Variant variant{ "", Channels::leftRight, realTime | together | more };
            const Stereo heard = stretched(voice(1), variant, 1, pitch);
            const Stereo truth = voice(pitch);
            std::printf(" %.2f |", logSpectralDistance(heard[0], truth[0], lateness(heard[0], truth[0]), 512));
        }
        std::printf("\n");
        std::fflush(stdout);
    }
}

}  // namespace

int main(int argc, char* argv[])
{
    const std::string_view only = argc > 1 ? argv[1] : "";
    if (only.empty() || only == "tempo")
        printTempo();
    if (only.empty() || only == "voice")
        printVoice();
    return 0;
}
