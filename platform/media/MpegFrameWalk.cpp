#include "platform/media/MpegFrameWalk.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace quillet {
namespace {

constexpr std::size_t headerBytes = 4;
/// Sync word, version, layer and sample rate: what all frames of a stream share.
constexpr std::uint32_t sharedBits = 0xFFFE0C00;

/// kbit/s by [MPEG-1 or later version][layer I, II, III][index]; ISO/IEC 11172-3 and 13818-3, table of bit rates.
constexpr std::array<std::array<std::array<std::uint16_t, 15>, 3>, 2> bitRates{ {
    { { { 0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448 },
        { 0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384 },
        { 0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320 } } },
    { { { 0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256 },
        { 0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160 },
        { 0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160 } } },
} };
constexpr std::array<int, 3> sampleRates{ 44'100, 48'000, 32'000 };

/// The length of the frame with this header in bytes; 0 if it is none, or does not tell ("free format").
std::int64_t frameBytes(std::uint32_t header)
{
    const std::uint32_t version = header >> 19 & 3;  // 3: MPEG-1, 2: MPEG-2, 0: MPEG-2.5
    const std::uint32_t layerBits = header >> 17 & 3;
    const std::uint32_t rateIndex = header >> 12 & 15;
    const std::uint32_t sampleRateIndex = header >> 10 & 3;
    if (header >> 21 != 0x7FF || version == 1 || layerBits == 0 || rateIndex == 0 || rateIndex == 15 || sampleRateIndex == 3)
        return 0;
    const std::uint32_t layer = 4 - layerBits;
    const bool isFirstVersion = version == 3;
    const int sampleRate = sampleRates[sampleRateIndex] >> (isFirstVersion ? 0 : version == 2 ? 1 : 2);
    const int bitRate = 1000 * bitRates[isFirstVersion ? 0 : 1][layer - 1][rateIndex];
    const int padding = static_cast<int>(header >> 9 & 1);
    if (layer == 1)
        return 4 * (12 * bitRate / sampleRate + padding);
    return (layer == 3 && !isFirstVersion ? 72 : 144) * bitRate / sampleRate + padding;
}

/// The file through a buffer that moves forwards.
class ForwardBytes {
public:
    explicit ForwardBytes(const BytesAt& bytesAt)
        : m_bytesAt(bytesAt)
    {
    }

    /// Up to `count` bytes at `offset`, fewer at the file's end. `offset` does not fall from call to call.
    std::span<const unsigned char> at(std::int64_t offset, std::size_t count)
    {
        const auto have = static_cast<std::int64_t>(m_filled);
        if (offset < m_begin || offset + static_cast<std::int64_t>(count) > m_begin + have) {
            m_begin = offset;
            m_filled = m_bytesAt(offset, m_buffer);
        }
        const auto skipped = static_cast<std::size_t>(offset - m_begin);
        return std::span(m_buffer).first(m_filled).subspan(skipped, std::min(count, m_filled - skipped));
    }

private:
    const BytesAt& m_bytesAt;
    // Fits the processor's cache, which is what makes it quick.
    std::vector<unsigned char> m_buffer = std::vector<unsigned char>(std::size_t{ 128 } * 1024);
    std::int64_t m_begin = 0;
    std::size_t m_filled = 0;
};

std::uint32_t bigEndian(std::span<const unsigned char> bytes)
{
    return std::uint32_t{ bytes[0] } << 24 | std::uint32_t{ bytes[1] } << 16 | std::uint32_t{ bytes[2] } << 8 | bytes[3];
}

bool beginsTag(std::span<const unsigned char> bytes)
{
    constexpr std::array<std::string_view, 4> tags{ "TAG", "APETAGEX", "LYRICSBEGIN", "ID3" };
    return std::ranges::any_of(tags, [&](std::string_view tag) {
        return bytes.size() >= tag.size() && std::memcmp(bytes.data(), tag.data(), tag.size()) == 0;
    });
}

}  // namespace

MpegFrames walkMpegFrames(const BytesAt& bytesAt, std::int64_t firstFrame)
{
    MpegFrames frames;
    ForwardBytes bytes(bytesAt);
    std::uint32_t first = 0;
    std::int64_t offset = firstFrame;
    for (;;) {
        const auto start = bytes.at(offset, headerBytes);
        if (start.size() < headerBytes)
            break;
        const std::uint32_t header = bigEndian(start);
        const std::int64_t length = frameBytes(header);
        if (first == 0)
            first = header;
        if (length == 0 || ((header ^ first) & sharedBits) != 0) {
            frames.reachesTheEnd = beginsTag(bytes.at(offset, 16));
            return frames;
        }
        frames.offsets.push_back(offset);
        offset += length;
    }
    frames.reachesTheEnd = true;
    // Of the last one there may be a part only.
    if (!frames.offsets.empty() && bytes.at(offset - 1, 1).empty())
        frames.offsets.pop_back();
    return frames;
}

}  // namespace quillet
