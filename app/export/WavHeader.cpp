#include "app/export/WavHeader.h"

#include "platform/base/Require.h"

#include <bit>
#include <concepts>
#include <cstring>
#include <limits>
#include <string_view>

namespace quillet {
namespace {

constexpr std::uint32_t unknownSize = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint16_t ieeeFloatFormat = 3;
constexpr std::uint16_t channels = 2;
constexpr std::uint16_t bytesPerFrame = static_cast<std::uint16_t>(wavBytesPerFrame);
constexpr std::uint32_t largeSizeChunkBytes = 28;
constexpr std::uint32_t chunkHeadBytes = 8;

class HeaderBytes {
    static_assert(std::endian::native == std::endian::little, "WAV is little-endian, and samples are written as they lie");

public:
    void putText(std::string_view fourCharacters) { append(fourCharacters.data(), fourCharacters.size()); }
    void put(std::integral auto number) { append(&number, sizeof number); }

    [[nodiscard]] const std::array<std::byte, wavHeaderSize>& complete() const
    {
        REQUIRE(m_used == wavHeaderSize);
        return m_bytes;
    }

private:
    void append(const void* data, std::size_t size)
    {
        REQUIRE(m_used + size <= wavHeaderSize);
        std::memcpy(m_bytes.data() + m_used, data, size);
        m_used += size;
    }

    std::array<std::byte, wavHeaderSize> m_bytes{};
    std::size_t m_used = 0;
};

}  // namespace

std::array<std::byte, wavHeaderSize> wavHeader(int sampleRate, std::optional<std::int64_t> frameCount)
{
    REQUIRE(sampleRate > 0 && frameCount.value_or(0) >= 0);
    const auto frames = static_cast<std::uint64_t>(frameCount.value_or(0));
    const std::uint64_t dataSize = frames * bytesPerFrame;
    const std::uint64_t fileSize = dataSize + wavHeaderSize - chunkHeadBytes;
    const bool large = fileSize >= unknownSize;
    const auto rate = static_cast<std::uint32_t>(sampleRate);
    const auto size32 = [&](std::uint64_t size) {
        return frameCount && !large ? static_cast<std::uint32_t>(size) : unknownSize;
    };

    HeaderBytes header;
    header.putText(large ? "RF64" : "RIFF");
    header.put(size32(fileSize));
    header.putText("WAVE");

    // EBU Tech 3306: a chunk of junk keeps the place of the 64-bit sizes.
    header.putText(large ? "ds64" : "JUNK");
    header.put(largeSizeChunkBytes);
    header.put(std::uint64_t{ large ? fileSize : 0 });
    header.put(std::uint64_t{ large ? dataSize : 0 });
    header.put(std::uint64_t{ large ? frames : 0 });
    header.put(std::uint32_t{ 0 });

    header.putText("fmt ");
    header.put(std::uint32_t{ 18 });
    header.put(ieeeFloatFormat);
    header.put(channels);
    header.put(rate);
    header.put(std::uint32_t{ rate * bytesPerFrame });
    header.put(bytesPerFrame);
    header.put(std::uint16_t{ 8 * bytesPerFrame / channels });
    header.put(std::uint16_t{ 0 });

    header.putText("fact");
    header.put(std::uint32_t{ 4 });
    header.put(size32(frames));

    header.putText("data");
    header.put(size32(dataSize));
    return header.complete();
}

}  // namespace quillet
