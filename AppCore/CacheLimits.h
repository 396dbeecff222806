// The limits of the waveform cache that are offered for choice, and how one that is typed is read. Values only: the cache
// itself holds what was chosen.
// Threads: constants and functions without state.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quillet {

/// One mebibyte.
inline constexpr std::int64_t bytesPerMB = 1'048'576;
inline constexpr double secondsPerDay = 86'400;

enum class SizePreset { one, fifty, hundred, unlimited, custom };
enum class AgePreset { seven, fourteen, oneMonth, sixMonths, oneYear, indefinite, custom };

template <typename Preset, typename Limit> struct CacheLimit {
    Preset preset;
    /// English, for translation.
    const char* label;
    /// Nothing: no limit; of `custom` it means nothing.
    std::optional<Limit> limit;
};

/// In the order in which they are offered; bytes.
inline constexpr std::array<CacheLimit<SizePreset, std::int64_t>, 5> sizePresets{ {
    { SizePreset::one, "1 MB", bytesPerMB },
    { SizePreset::fifty, "50 MB", 50 * bytesPerMB },
    { SizePreset::hundred, "100 MB", 100 * bytesPerMB },
    { SizePreset::unlimited, "Unlimited", std::nullopt },
    { SizePreset::custom, "Custom", std::nullopt },
} };

/// Seconds.
inline constexpr std::array<CacheLimit<AgePreset, double>, 7> agePresets{ {
    { AgePreset::seven, "7 days", 7 * secondsPerDay },
    { AgePreset::fourteen, "14 days", 14 * secondsPerDay },
    { AgePreset::oneMonth, "1 month", 30 * secondsPerDay },
    { AgePreset::sixMonths, "6 months", 180 * secondsPerDay },
    { AgePreset::oneYear, "1 year", 365 * secondsPerDay },
    { AgePreset::indefinite, "Indefinite", std::nullopt },
    { AgePreset::custom, "Custom", std::nullopt },
} };

/// The preset that is exactly `limit`; `custom` where none is.
template <typename Preset, typename Limit, std::size_t count>
[[nodiscard]] constexpr Preset presetOf(const std::array<CacheLimit<Preset, Limit>, count>& presets,
                                        const std::optional<Limit>& limit)
{
    for (const auto& row : presets)
        if (row.preset != Preset::custom && row.limit == limit)
            return row.preset;
    return Preset::custom;
}

/// A whole decimal number of at least 1, spaces around it allowed, that times a mebibyte or a day is still a number of 64 bits;
/// nothing for any other text.
[[nodiscard]] std::optional<std::int64_t> customLimit(std::string_view text);

}  // namespace quillet
