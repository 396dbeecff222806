#include "tests/support/AudioFixtures.h"

#include "platform/base/Require.h"
#include "tests/support/Command.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <numbers>
#include <random>

namespace quillet {
namespace {

template <typename T> void append(std::string& bytes, T value)
{
    char raw[sizeof(T)];
    std::memcpy(raw, &value, sizeof(T));
    bytes.append(raw, sizeof(T));
}

}  // namespace

TestSignal livelySignal(int sampleRate, int channels, double seconds)
{
    constexpr double strikesPerSecond = 2.5;
    TestSignal signal{ sampleRate, channels, {} };
    const auto frames = static_cast<std::int64_t>(seconds * sampleRate);
    signal.samples.reserve(static_cast<std::size_t>(frames * channels));
    std::mt19937 random(1);
    for (std::int64_t frame = 0; frame < frames; ++frame) {
        const double time = static_cast<double>(frame) / sampleRate;
        for (int channel = 0; channel < channels; ++channel) {
            const double phase = 2 * std::numbers::pi * time * (180 + 70 * channel + 15 * time);
            const double sinceStrike = std::fmod(time + 0.13 * channel, 1 / strikesPerSecond);
            const double noise = static_cast<double>(random()) / 2147483648.0 - 1;
            signal.samples.push_back(static_cast<float>(0.4 * std::sin(phase) + 0.3 * noise * std::exp(-12 * sinceStrike)));
        }
    }
    return signal;
}

std::string wavBytes(const TestSignal& signal, WavSamples samples)
{
    const bool isFloat = samples == WavSamples::float32;
    const std::uint16_t bytesPerSample = isFloat ? 4 : 2;
    const auto blockBytes = static_cast<std::uint16_t>(bytesPerSample * signal.channels);
    const auto dataBytes = static_cast<std::uint32_t>(signal.samples.size() * bytesPerSample);
    std::string bytes = "RIFF";
    append<std::uint32_t>(bytes, 36 + dataBytes);
    bytes += "WAVEfmt ";
    append<std::uint32_t>(bytes, 16);
    append<std::uint16_t>(bytes, isFloat ? 3 : 1);
    append(bytes, static_cast<std::uint16_t>(signal.channels));
    append(bytes, static_cast<std::uint32_t>(signal.sampleRate));
    append(bytes, static_cast<std::uint32_t>(signal.sampleRate) * blockBytes);
    append(bytes, blockBytes);
    append(bytes, static_cast<std::uint16_t>(8 * bytesPerSample));
    bytes += "data";
    append(bytes, dataBytes);
    for (const float sample : signal.samples) {
        if (isFloat)
            append(bytes, sample);
        else
            append(bytes, static_cast<std::int16_t>(std::clamp(std::lround(sample * 32768.0F), -32768L, 32767L)));
    }
    return bytes;
}

void writeBytes(const FilePath& path, std::string_view bytes)
{
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    REQUIRE(file.good());
}

std::string readBytes(const FilePath& path)
{
    std::ifstream file(path, std::ios::binary);
    REQUIRE(file.good());
    return { std::istreambuf_iterator<char>(file), {} };
}

void runFfmpeg(const std::vector<std::string>& arguments)
{
    std::vector<std::string> command{ "ffmpeg", "-nostdin", "-v", "error", "-y" };
    command.insert(command.end(), arguments.begin(), arguments.end());
    const CommandResult result = runCommand(command);
    if (result.status != 0)
        std::fputs(result.errorOutput.c_str(), stderr);
    REQUIRE(result.status == 0);
}

void encodeAudio(const TestSignal& signal, const FilePath& target, const std::vector<std::string>& arguments)
{
    FilePath source = target;
    source += ".source.wav";
    writeBytes(source, wavBytes(signal, WavSamples::float32));
    std::vector<std::string> command{ "-i", "file:" + source.native() };
    command.insert(command.end(), arguments.begin(), arguments.end());
    command.push_back("file:" + target.native());
    runFfmpeg(command);
    std::filesystem::remove(source);
}

std::vector<float> decodeWithFfmpeg(const FilePath& path, const std::vector<std::string>& decoderArguments)
{
    FilePath raw = path;
    raw += ".raw";
    std::vector<std::string> command = decoderArguments;
    const std::vector<std::string> rest{
        "-i", "file:" + path.native(), "-map", "0:a:0", "-f", "f32le", "file:" + raw.native()
    };
    command.insert(command.end(), rest.begin(), rest.end());
    runFfmpeg(command);
    const std::string bytes = readBytes(raw);
    std::filesystem::remove(raw);
    std::vector<float> samples(bytes.size() / sizeof(float));
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
    return samples;
}

}  // namespace quillet
