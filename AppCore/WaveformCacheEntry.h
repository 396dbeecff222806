// One kept waveform: the peaks of a file and what the file was like when they were computed. A record only; whether it still
// holds is the cache's business.
// Threads: a value, no shared state.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

struct WaveformCacheEntry {
    /// The peaks as consecutive 32-bit floats, little-endian.
    std::string samplesData;
    /// Of the audio file, bytes.
    std::int64_t fileSize = 0;
    /// Of the audio file; seconds since 2001-01-01 00:00:00 UTC.
    double modDate = 0;
    /// When the entry was written or read last; the same scale.
    double lastAccessed = 0;

    bool operator==(const WaveformCacheEntry&) const = default;
};

/// One JSON object: "samplesData" in Base64, the others numbers. Nothing if a number is not finite.
[[nodiscard]] std::optional<std::string> encodeWaveformCacheEntry(const WaveformCacheEntry& entry);

/// Strict: all four members, each of its type; others are ignored. Nothing otherwise.
[[nodiscard]] std::optional<WaveformCacheEntry> decodeWaveformCacheEntry(std::string_view json);

/// Long enough for `lastAccessedOfRecord`.
inline constexpr std::size_t waveformCacheHeadBytes = 192;

/// `lastAccessed` of a record of `byteCount` bytes that begins with `head`, without the peaks having been read: of one that
/// `encodeWaveformCacheEntry` has written. Nothing if that cannot be told; the record may still be a good one of another
/// writer.
[[nodiscard]] std::optional<double> lastAccessedOfRecord(std::string_view head, std::int64_t byteCount);

[[nodiscard]] std::string dataOfPeaks(std::span<const float> peaks);
/// Bytes after the last whole float are ignored.
[[nodiscard]] std::vector<float> peaksOfData(std::string_view data);

}  // namespace quillet
