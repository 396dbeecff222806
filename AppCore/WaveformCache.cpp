#include "AppCore/WaveformCache.h"

#include "AppCore/SharedInstance.h"
#include "platform/base/Require.h"
#include "platform/files/SystemFileAttributes.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace quillet {
namespace {

/// File systems differ in how exactly they keep a time.
constexpr double modDateTolerance = 1.0;

std::string keyOf(const FilePath& url) { return std::string(WaveformCache::cacheKeyPrefix) + url.native(); }

/// What is no peak would spoil the drawing.
bool arePeaks(const std::vector<float>& samples)
{
    return std::ranges::all_of(samples, [](float sample) { return sample >= 0 && sample <= 1; });
}

}  // namespace

WaveformCache::WaveformCache(DefaultsDomain& defaults, const FileAttributesReader& files, Clock clock)
    : m_defaults(defaults),
      m_files(files),
      m_clock(std::move(clock))
{
    loadLimits();
}

WaveformCache::WaveformCache(DefaultsDomain& defaults, const FileAttributesReader& files)
    : WaveformCache(defaults, files, currentDate)
{
}

WaveformCache& WaveformCache::shared() { return SharedInstance<WaveformCache>::get(); }

// ---- Entries ----

std::optional<std::vector<float>> WaveformCache::get(const FilePath& url)
{
    const std::string key = keyOf(url);
    const auto record = m_defaults.data(key);
    auto entry = record ? decodeWaveformCacheEntry(*record) : std::nullopt;
    if (!entry)
        return std::nullopt;
    if (!isValid(*entry, url)) {
        m_defaults.remove(key);
        return std::nullopt;
    }
    auto samples = peaksOfData(entry->samplesData);
    if (!arePeaks(samples))
        return std::nullopt;
    entry->lastAccessed = m_clock();
    store(key, *entry);
    return samples;
}

bool WaveformCache::isValid(const WaveformCacheEntry& entry, const FilePath& url) const
{
    const auto attributes = m_files.attributes(url);
    return attributes && attributes->sizeBytes == entry.fileSize
        && std::abs(attributes->modificationDate - entry.modDate) <= modDateTolerance;
}

void WaveformCache::set(std::span<const float> samples, const FilePath& url)
{
    const auto attributes = m_files.attributes(url);
    if (!attributes)
        return;
    store(keyOf(url), { dataOfPeaks(samples), attributes->sizeBytes, attributes->modificationDate, m_clock() });
    evict();
}

void WaveformCache::store(const std::string& key, const WaveformCacheEntry& entry)
{
    if (const auto json = encodeWaveformCacheEntry(entry))
        m_defaults.setData(key, *json);
}

void WaveformCache::clearAll() { m_defaults.removeAll(m_defaults.keysWithPrefix(cacheKeyPrefix)); }

std::int64_t WaveformCache::entryCount() const
{
    // The keys alone take a fraction of the time that the sizes take.
    return std::ssize(m_defaults.keysWithPrefix(cacheKeyPrefix));
}

std::int64_t WaveformCache::totalBytes() const { return m_defaults.sizeOfPrefix(cacheKeyPrefix).dataBytes; }

// ---- Eviction ----

void WaveformCache::evict()
{
    Limits limits;
    {
        const std::scoped_lock lock(m_limitsMutex);
        limits = m_limits;
    }
    const auto evicted = evictedKeys(records(), limits, m_clock());
    if (!evicted.empty())
        m_defaults.removeAll(std::vector<std::string>(evicted.begin(), evicted.end()));
}

/// All that decode, without their peaks. Only records of other writers have to be read whole for that.
std::vector<WaveformCache::Record> WaveformCache::records() const
{
    std::vector<Record> records;
    for (DefaultsHead& stored : m_defaults.dataHeads(cacheKeyPrefix, waveformCacheHeadBytes)) {
        auto lastAccessed = lastAccessedOfRecord(stored.head, stored.byteCount);
        if (!lastAccessed) {
            const auto json = m_defaults.data(stored.key);
            const auto decoded = json ? decodeWaveformCacheEntry(*json) : std::nullopt;
            if (!decoded)
                continue;
            lastAccessed = decoded->lastAccessed;
        }
        WaveformCacheEntry entry;
        entry.lastAccessed = *lastAccessed;
        records.push_back({ std::move(stored.key), std::move(entry), stored.byteCount });
    }
    return records;
}

std::set<std::string> WaveformCache::evictedKeys(const std::vector<Record>& records, const Limits& limits, double now)
{
    std::set<std::string> evicted;
    std::vector<const Record*> rest;
    for (const Record& record : records) {
        if (limits.maxAgeSeconds && record.entry.lastAccessed < now - *limits.maxAgeSeconds)
            evicted.insert(record.key);
        else
            rest.push_back(&record);
    }
    if (!limits.maxTotalBytes)
        return evicted;
    std::int64_t total = 0;
    for (const Record* record : rest)
        REQUIRE(!__builtin_add_overflow(total, record->blobSize, &total));
    // By age; of equals the one that comes first in `records`.
    std::ranges::sort(rest, {}, [](const Record* record) { return std::pair(record->entry.lastAccessed, record); });
    for (auto oldest = rest.begin(); total > *limits.maxTotalBytes && oldest != rest.end(); ++oldest) {
        evicted.insert((*oldest)->key);
        total -= (*oldest)->blobSize;
    }
    return evicted;
}

// ---- Limits ----

void WaveformCache::loadLimits()
{
    const std::scoped_lock lock(m_limitsMutex);
    m_limits = { defaultMaxAgeSeconds, defaultMaxTotalBytes };
    if (m_defaults.boolean(hasMaxAgeKey).value_or(false)) {
        const double stored = m_defaults.real(maxAgeKey).value_or(0);
        m_limits.maxAgeSeconds = stored > 0 ? std::optional(stored) : std::nullopt;
    }
    if (m_defaults.boolean(hasMaxSizeKey).value_or(false)) {
        const std::int64_t stored = m_defaults.integer(maxSizeKey).value_or(0);
        m_limits.maxTotalBytes = stored >= 1 ? std::optional(stored) : std::nullopt;
    }
    saveLimits();
}

/// Under the lock. A stored 0 says "no limit", which a missing key does not.
void WaveformCache::saveLimits()
{
    m_defaults.setBoolean(hasMaxAgeKey, true);
    if (m_limits.maxAgeSeconds)
        m_defaults.setReal(maxAgeKey, *m_limits.maxAgeSeconds);
    else
        m_defaults.setInteger(maxAgeKey, 0);
    m_defaults.setBoolean(hasMaxSizeKey, true);
    m_defaults.setInteger(maxSizeKey, m_limits.maxTotalBytes.value_or(0));
}

std::optional<double> WaveformCache::maxAgeSeconds() const
{
    const std::scoped_lock lock(m_limitsMutex);
    return m_limits.maxAgeSeconds;
}

void WaveformCache::setMaxAgeSeconds(std::optional<double> seconds)
{
    const std::scoped_lock lock(m_limitsMutex);
    m_limits.maxAgeSeconds = seconds;
    saveLimits();
}

std::optional<std::int64_t> WaveformCache::maxTotalBytes() const
{
    const std::scoped_lock lock(m_limitsMutex);
    return m_limits.maxTotalBytes;
}

void WaveformCache::setMaxTotalBytes(std::optional<std::int64_t> bytes)
{
    const std::scoped_lock lock(m_limitsMutex);
    m_limits.maxTotalBytes = bytes;
    saveLimits();
}

}  // namespace quillet
