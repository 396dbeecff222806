// The practice settings of one audio file, and their JSON form. The record takes values as they are: whether they fit the
// file, the controls or the equaliser's bands is the business of whoever uses them.
// Threads: a value, no shared state.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

struct FileSettings {
    /// Seconds from the file's start; a `regionEnd` of 0 means that no region was chosen yet.
    double regionStart = 0;
    double regionEnd = 0;
    /// Percent, 100 is normal.
    double speed = 100;
    /// Percent, how far one step of the speed goes.
    double speedStep = 5;
    /// Cents.
    double pitch = 0;
    bool eqEnabled = false;
    /// dB, the lowest band first.
    std::vector<double> eqGains = std::vector<double>(5, 0.0);
    bool loopEnabled = true;
    /// The pause between two passes of the loop is the sum of both.
    std::int64_t loopDelaySeconds = 0;
    std::int64_t loopDelayMilliseconds = 0;

    bool operator==(const FileSettings&) const = default;
};

/// One JSON object with all ten members; every number reads back exactly. Nothing if a number is not finite.
[[nodiscard]] std::optional<std::string> encodeFileSettings(const FileSettings& settings);

/// Strict: all ten members, each of its type (integer members take integral numbers only); others are ignored. Nothing
/// otherwise.
[[nodiscard]] std::optional<FileSettings> decodeFileSettings(std::string_view json);

}  // namespace quillet
