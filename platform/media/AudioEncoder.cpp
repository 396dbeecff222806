#include "platform/media/AudioEncoder.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <utility>

namespace quillet {

std::optional<AudioFormat> audioFormatOf(std::string_view extension)
{
    constexpr std::array<std::pair<std::string_view, AudioFormat>, 4> known{ {
        { ".flac", AudioFormat::flac },
        { ".mp3", AudioFormat::mp3 },
        { ".m4a", AudioFormat::m4a },
        { ".opus", AudioFormat::opus },
    } };
    std::string small(extension);
    std::ranges::transform(small, small.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    for (const auto& [end, format] : known)
        if (small == end)
            return format;
    return std::nullopt;
}

int encodedRate(AudioFormat format, int sampleRate)
{
    constexpr int opusRate = 48000;
    constexpr std::array common{ 44100, 48000 };
    switch (format) {
    case AudioFormat::flac:
        return sampleRate;
    case AudioFormat::opus:
        return opusRate;
    case AudioFormat::mp3:
    case AudioFormat::m4a:
        break;
    }
    if (std::ranges::find(common, sampleRate) != common.end())
        return sampleRate;
    // A family's own: 88.2 kHz to 44.1 kHz.
    return sampleRate % 11025 == 0 ? common.front() : common.back();
}

}  // namespace quillet
