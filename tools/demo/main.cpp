// quillet-demo-song OUT.wav: writes the demo song as a 16-bit WAV file.

#include "tools/demo/DemoSong.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>

namespace {

void append(std::string& bytes, std::uint32_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes += static_cast<char>((value >> (8 * i)) & 0xFF);
}

std::string wavBytes(const quillet::StereoSound& sound)
{
    constexpr std::uint32_t rate = quillet::StereoSound::sampleRate;
    constexpr std::uint32_t bytesPerFrame = 4;
    const auto dataBytes = static_cast<std::uint32_t>(sound.frames()) * bytesPerFrame;
    std::string bytes = "RIFF";
    append(bytes, 36 + dataBytes, 4);
    bytes += "WAVEfmt ";
    append(bytes, 16, 4);
    append(bytes, 1, 2);  // PCM
    append(bytes, 2, 2);
    append(bytes, rate, 4);
    append(bytes, rate * bytesPerFrame, 4);
    append(bytes, bytesPerFrame, 2);
    append(bytes, 16, 2);
    bytes += "data";
    append(bytes, dataBytes, 4);
    for (std::size_t i = 0; i < sound.frames(); ++i)
        for (const float sample : { sound.left[i], sound.right[i] })
            append(bytes, static_cast<std::uint32_t>(std::lround(32767 * sample)), 2);
    return bytes;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: quillet-demo-song OUT.wav\n", stderr);
        return 2;
    }
    const std::string bytes = wavBytes(quillet::renderDemoSong());
    std::ofstream file(argv[1], std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        std::fprintf(stderr, "%s cannot be written.\n", argv[1]);
        return 1;
    }
    return 0;
}
