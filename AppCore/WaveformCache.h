// Keeps the waveform of every audio file in the user's defaults domain, one record under the file's path, so that a file that
// is opened again need not be decoded for it. A record holds only as long as the file's size and modification time are what
// they were. The cache limits itself by age and total size when something is stored, and never otherwise. It reports nothing:
// what cannot be read, written or believed counts as absent.
// Threads: callable from every thread; it waits for disks, so not from the main thread, save for the limits. Calls for one file
// do not overlap.
#pragma once

#include "AppCore/WaveformCacheEntry.h"
#include "platform/base/FilePath.h"
#include "platform/defaults/DefaultsDomain.h"
#include "platform/files/FileAttributes.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

class WaveformCache {
public:
    static constexpr std::string_view cacheKeyPrefix = "waveformCache.";
    static constexpr std::string_view maxAgeKey = "waveformCacheSettings.maxAge";
    static constexpr std::string_view maxSizeKey = "waveformCacheSettings.maxSize";
    static constexpr std::string_view hasMaxAgeKey = "waveformCacheSettings.hasMaxAge";
    static constexpr std::string_view hasMaxSizeKey = "waveformCacheSettings.hasMaxSize";
    /// 180 days.
    static constexpr double defaultMaxAgeSeconds = 15'552'000;
    /// 100 MB.
    static constexpr std::int64_t defaultMaxTotalBytes = 104'857'600;

    /// Answers the present time, in seconds since 2001-01-01 00:00:00 UTC.
    using Clock = std::function<double()>;

    /// Over any domain, which outlives the cache, as the reader does. Reads the limits, and writes them where they are missing.
    WaveformCache(DefaultsDomain& defaults, const FileAttributesReader& files, Clock clock);
    /// With the system's clock.
    WaveformCache(DefaultsDomain& defaults, const FileAttributesReader& files);

    /// The composition root's cache over the standard domain.
    static WaveformCache& shared();

    /// The peaks of the file, if they are kept and the file is what it was; then they count as used now. A record of a file
    /// that has changed or gone is removed; one that does not decode, or holds what is no peak, stays.
    [[nodiscard]] std::optional<std::vector<float>> get(const FilePath& url);

    /// Keeps the peaks of the file, then removes what the limits forbid. Keeps nothing if the file's attributes cannot be read.
    void set(std::span<const float> samples, const FilePath& url);

    /// Removes every entry; the limits stay.
    void clearAll();

    [[nodiscard]] std::int64_t entryCount() const;
    /// Of the records as they are stored.
    [[nodiscard]] std::int64_t totalBytes() const;

    /// Nothing: no limit. A change takes effect at the next `set`.
    [[nodiscard]] std::optional<double> maxAgeSeconds() const;
    void setMaxAgeSeconds(std::optional<double> seconds);
    [[nodiscard]] std::optional<std::int64_t> maxTotalBytes() const;
    void setMaxTotalBytes(std::optional<std::int64_t> bytes);

    struct Limits {
        std::optional<double> maxAgeSeconds;
        std::optional<std::int64_t> maxTotalBytes;
    };
    struct Record {
        std::string key;
        WaveformCacheEntry entry;
        /// Of the stored record, bytes.
        std::int64_t blobSize = 0;
    };
    /// What to remove: all that was last used before `now` minus the age limit, then the longest unused until the rest fits
    /// into the size limit. Of equally old ones the earlier in `records` goes first. Peaks are not looked at. The sum of the
    /// sizes fits 64 bits (REQUIRE).
    [[nodiscard]] static std::set<std::string> evictedKeys(const std::vector<Record>& records, const Limits& limits,
                                                           double now);

private:
    void loadLimits();
    void saveLimits();
    [[nodiscard]] bool isValid(const WaveformCacheEntry& entry, const FilePath& url) const;
    void store(const std::string& key, const WaveformCacheEntry& entry);
    void evict();
    [[nodiscard]] std::vector<Record> records() const;

    DefaultsDomain& m_defaults;
    const FileAttributesReader& m_files;
    Clock m_clock;
    mutable std::mutex m_limitsMutex;
    Limits m_limits;  // guarded by m_limitsMutex
};

}  // namespace quillet
