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

std::string runFfmpeg(const std::vector<std::string>& arguments)
{
    std::vector<std::string> command{ "ffmpeg", "-nostdin", "-v", "error", "-y" };
    command.insert(command.end(), arguments.begin(), arguments.end());
    CommandResult result = runCommand(command);
    if (result.status != 0)
        std::fputs(result.errorOutput.c_str(), stderr);
    REQUIRE(result.status == 0);
    return std::move(result.output);
}

void encodeAudio(const TestSignal& signal, const FilePath& target, const std::vector<std::string>& arguments)
{
    FilePath source = target;
    source += ".source";
    writeBytes(source, { reinterpret_cast<const char*>(signal.samples.data()), signal.samples.size() * sizeof(float) });
    std::vector<std::string> command{ "-f",  "f32le",
                                      "-ar", std::to_string(signal.sampleRate),
                                      "-ac", std::to_string(signal.channels),
                                      "-i",  "file:" + source.native() };
    command.insert(command.end(), arguments.begin(), arguments.end());
    command.push_back("file:" + target.native());
    runFfmpeg(command);
    std::filesystem::remove(source);
}

std::vector<float> decodeWithFfmpeg(const FilePath& path, const std::vector<std::string>& decoderArguments)
{
    std::vector<std::string> command = decoderArguments;
    command.insert(command.end(), { "-i", "file:" + path.native(), "-map", "0:a:0", "-f", "f32le", "-" });
    const std::string bytes = runFfmpeg(command);
    std::vector<float> samples(bytes.size() / sizeof(float));
    if (!samples.empty())
        std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
    return samples;
}

}  // namespace quillet
