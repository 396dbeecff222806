#include "tools/demo/Instruments.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace quillet {
namespace {

constexpr double turn = 2 * std::numbers::pi;

double frequencyHz(double pitch) { return 440 * std::exp2((pitch - 69) / 12); }

/// White noise, ±1.
class Noise {
public:
    explicit Noise(double seed)
        : m_state(static_cast<std::uint32_t>(seed * StereoSound::sampleRate) * 2 + 1)
    {
    }
    double next()
    {
        m_state = m_state * 1664525U + 1013904223U;
        return static_cast<double>(m_state) / 2147483648.0 - 1;
    }

private:
    std::uint32_t m_state;
};

/// One pole each: what is slower than the corner passes `low`, the rest `high`.
class Splitter {
public:
    explicit Splitter(double cornerHz)
        : m_share(1 - std::exp(-turn * cornerHz / StereoSound::sampleRate))
    {
    }
    double low(double input) { return m_low += m_share * (input - m_low); }
    double high(double input) { return input - low(input); }

private:
    double m_share;
    double m_low = 0;
};

/// Rises in `attack`, holds, and dies away in about `release` seconds after `length`.
double gate(double time, double length, double attack, double release)
{
    const double rise = std::min(time / attack, 1.0);
    return time < length ? rise : rise * std::exp(-4 * (time - length) / release);
}

/// Calls `sampleAt(seconds since the start)` for every frame of `seconds` and adds its answer; `pan` is -1 (left) to 1.
template <typename Function> void render(StereoSound& sound, double start, double seconds, double pan, Function sampleAt)
{
    const auto first = static_cast<std::size_t>(std::lround(start * StereoSound::sampleRate));
    const auto count = static_cast<std::size_t>(seconds * StereoSound::sampleRate);
    const double toLeft = std::cos((pan + 1) * turn / 8);
    const double toRight = std::sin((pan + 1) * turn / 8);
    constexpr std::size_t fade = 200;
    for (std::size_t i = 0; i < count; ++i) {
        const double end = std::min(1.0, static_cast<double>(count - i) / fade);
        const double value = end * sampleAt(static_cast<double>(i) / StereoSound::sampleRate);
        sound.add(first + i, value * toLeft, value * toRight);
    }
}

}  // namespace

void playKick(StereoSound& sound, const Stroke& stroke)
{
    Noise noise(stroke.startSeconds);
    render(sound, stroke.startSeconds, 0.4, 0, [&](double time) {
        // The phase is the integral of 48 Hz + 130 Hz falling in 30 ms.
        const double phase = turn * (48 * time + 130 * 0.03 * (1 - std::exp(-time / 0.03)));
        const double body = std::sin(phase) * std::exp(-time / 0.12) * std::min(time / 0.001, 1.0);
        const double click = noise.next() * std::exp(-time / 0.002);
        return stroke.strength * (1.1 * std::tanh(1.4 * body) + 0.12 * click);
    });
}

void playSnare(StereoSound& sound, const Stroke& stroke)
{
    Noise noise(stroke.startSeconds + 1);
    Splitter rumble(700);
    Splitter hiss(9000);
    render(sound, stroke.startSeconds, 0.35, 0.1, [&](double time) {
        const double skin =
            std::sin(turn * 186 * time) * std::exp(-time / 0.05) + 0.6 * std::sin(turn * 331 * time) * std::exp(-time / 0.03);
        const double wires =
            hiss.low(rumble.high(noise.next())) * (0.7 * std::exp(-time / 0.07) + 0.3 * std::exp(-time / 0.02));
        return stroke.strength * std::min(time / 0.0005, 1.0) * (0.4 * skin + 1.3 * wires);
    });
}

void playHat(StereoSound& sound, const Stroke& stroke, Hat hat)
{
    Noise noise(stroke.startSeconds + 2);
    Splitter first(7000);
    Splitter second(7000);
    const double decay = hat == Hat::open ? 0.14 : 0.028;
    render(sound, stroke.startSeconds, 6 * decay, 0.35, [&](double time) {
        const double metal = std::sin(turn * 5310 * time) * std::sin(turn * 8123 * time) + std::sin(turn * 9240 * time);
        const double shimmer = second.high(first.high(noise.next() + 0.25 * metal));
        return 1.6 * stroke.strength * shimmer * std::exp(-time / decay) * std::min(time / 0.0004, 1.0);
    });
}

void playShaker(StereoSound& sound, const Stroke& stroke)
{
    Noise noise(stroke.startSeconds + 3);
    Splitter floor(5000);
    Splitter roof(11'000);
    render(sound, stroke.startSeconds, 0.09, -0.5, [&](double time) {
        const double swish = std::sin(std::numbers::pi * std::min(time / 0.08, 1.0));
        return 0.5 * stroke.strength * roof.low(floor.high(noise.next())) * swish * swish;
    });
}

void playBass(StereoSound& sound, const Note& note)
{
    const double frequency = frequencyHz(note.pitch);
    Splitter tone(900);
    Splitter offset(20);
    render(sound, note.startSeconds, note.lengthSeconds + 0.12, 0, [&](double time) {
        const double phase = turn * frequency * time;
        const double pluck = std::exp(-time / 0.16);
        const double string =
            std::sin(phase) + (0.25 + 0.35 * pluck) * std::sin(2 * phase + 0.4) + 0.22 * pluck * std::sin(3 * phase);
        const double level = gate(time, note.lengthSeconds, 0.006, 0.1) * (0.65 + 0.35 * std::exp(-time / 0.4));
        return 0.55 * note.strength * offset.high(tone.low(std::tanh(1.3 * string))) * level;
    });
}

void playPiano(StereoSound& sound, const Note& note)
{
    const double frequency = frequencyHz(note.pitch);
    const auto voice = [&](double time) {
        const double tine = std::sin(turn * frequency * 14 * time) * std::exp(-time / 0.04) * 0.10 * note.strength;
        const double bark = (0.25 + 1.1 * note.strength) * std::exp(-time / 0.5);
        const double body = std::sin(turn * frequency * time + bark * std::sin(turn * frequency * time));
        const double level = gate(time, note.lengthSeconds, 0.003, 0.35) * std::exp(-time / 1.8);
        return 0.2 * note.strength * level * (body + tine);
    };
    const double seconds = note.lengthSeconds + 0.5;
    constexpr double sweepHz = 2.3;
    render(sound, note.startSeconds, seconds, -1,
           [&](double time) { return voice(time) * (0.75 + 0.25 * std::sin(turn * sweepHz * (note.startSeconds + time))); });
    render(sound, note.startSeconds, seconds, 1,
           [&](double time) { return voice(time) * (0.75 - 0.25 * std::sin(turn * sweepHz * (note.startSeconds + time))); });
}

void playPad(StereoSound& sound, const Note& note)
{
    for (const double side : { -1.0, 1.0 }) {
        const double frequency = frequencyHz(note.pitch + 0.06 * side);
        Splitter soft(1400);
        Splitter softer(1400);
        render(sound, note.startSeconds, note.lengthSeconds + 0.6, 0.8 * side, [&](double time) {
            double wave = 0;
            for (int partial = 1; partial <= 6; ++partial)
                wave += std::sin(turn * frequency * partial * time + partial * (1 + side)) / partial;
            const double level = gate(time, note.lengthSeconds, 0.35, 0.6);
            return 0.045 * note.strength * softer.low(soft.low(wave)) * level;
        });
    }
}

void playLead(StereoSound& sound, const Note& note)
{
    const double frequency = frequencyHz(note.pitch);
    Noise noise(note.startSeconds + 4);
    Splitter breath(2500);
    double phase = 0;
    render(sound, note.startSeconds, note.lengthSeconds + 0.16, -0.12, [&](double time) {
        // The note is reached from a little below, and trembles once it has stood for a moment.
        const double slide = -0.5 * std::exp(-time / 0.018);
        const double tremble = 0.13 * std::clamp((time - 0.18) / 0.25, 0.0, 1.0) * std::sin(turn * 5.4 * time);
        phase += turn * frequency * std::exp2((slide + tremble) / 12) / StereoSound::sampleRate;
        const double wave =
            std::sin(phase) + 0.32 * std::sin(2 * phase) + 0.16 * std::sin(3 * phase) + 0.05 * std::sin(4 * phase);
        const double air = 0.05 * breath.high(noise.next()) * (0.4 + std::exp(-time / 0.05));
        return 0.27 * note.strength * gate(time, note.lengthSeconds, 0.018, 0.14) * (wave + air);
    });
}

}  // namespace quillet
