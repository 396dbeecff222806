#include "AppCore/WaveformCache.h"

#include "AppCore/Base64.h"
#include "platform/defaults/MemoryDefaultsDomain.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <limits>
#include <map>
#include <string>
#include <vector>

namespace quillet {
namespace {

using nlohmann::json;
using testing::UnorderedElementsAre;
using Peaks = std::vector<float>;

class FakeFileAttributes final : public FileAttributesReader {
public:
    std::map<FilePath, FileAttributes> files;

    [[nodiscard]] std::optional<FileAttributes> attributes(const FilePath& path) const override
    {
        const auto file = files.find(path);
        return file != files.end() ? std::optional(file->second) : std::nullopt;
    }
};

struct WaveformCacheTest : testing::Test {
    MemoryDefaultsDomain defaults;
    FakeFileAttributes files;
    double now = 1000;
    WaveformCache cache = made();

    const Peaks peaks{ 0, 0.25F, 1 };
    const std::string key = "waveformCache./a.wav";

    WaveformCacheTest() { files.files["/a.wav"] = { 5000, 700.5 }; }

    [[nodiscard]] WaveformCache made()
    {
        return { defaults, files, [this] { return now; } };
    }
};

// ---- Entries ----

TEST_F(WaveformCacheTest, ARecordHasItsStoredForm)
{
    cache.set(peaks, "/a.wav");
    const json record = json::parse(*defaults.data(key));
    EXPECT_EQ(
        record,
        (json{
            { "samplesData", "AAAAAAAAgD4AAIA/" }, { "fileSize", 5000 }, { "modDate", 700.5 }, { "lastAccessed", 1000.0 } }));

    // As another writer has it: other order, more members, a date without a fraction, bytes too many.
    defaults.setData(key, R"({"modDate":700,"x":1,"samplesData":"AACAPwAAAAAAAA==","lastAccessed":1e3,"fileSize":5000})");
    now = 2000;
    EXPECT_EQ(cache.get("/a.wav"), (Peaks{ 1, 0 }));
    EXPECT_EQ(json::parse(*defaults.data(key))["lastAccessed"], 2000.0);
}

TEST_F(WaveformCacheTest, AnEntryHoldsAsLongAsTheFileIsWhatItWas)
{
    const FileAttributes stored{ 5000, 700.5 };
    for (const auto& [file, holds] : { std::pair(stored, true),
                                       { { 5000, 701.5 }, true },
                                       { { 5000, 699.5 }, true },
                                       { { 5000, 702.5 }, false },
                                       { { 5000, 699.4 }, false },
                                       { { 5001, 700.5 }, false } }) {
        SCOPED_TRACE(testing::Message() << file.sizeBytes << " " << file.modificationDate);
        files.files["/a.wav"] = stored;
        cache.set(peaks, "/a.wav");
        files.files["/a.wav"] = file;
        EXPECT_EQ(cache.get("/a.wav").has_value(), holds);
        EXPECT_EQ(defaults.data(key).has_value(), holds);
    }
    files.files["/a.wav"] = stored;
    cache.set(peaks, "/a.wav");
    files.files.clear();
    EXPECT_FALSE(cache.get("/a.wav"));
    EXPECT_FALSE(defaults.data(key));
    cache.set(peaks, "/a.wav");
    EXPECT_EQ(cache.entryCount(), 0) << "nothing is kept for a file that is not there";
}

TEST_F(WaveformCacheTest, DamagedRecordsCountAsAbsentAndStay)
{
    const std::string nan = encodeBase64(dataOfPeaks(Peaks{ 0.5F, std::numeric_limits<float>::quiet_NaN() }));
    const std::string loud = encodeBase64(dataOfPeaks(Peaks{ 1.5F }));
    const auto record = [](const std::string& samples, const char* size = "5000", const char* modDate = "700.5") {
        return std::string(R"({"fileSize":)") + size + R"(,"lastAccessed":1,"modDate":)" + modDate + R"(,"samplesData":")"
            + samples + "\"}";
    };
    ASSERT_EQ((defaults.setData(key, record("AACAPw==")), cache.get("/a.wav")), Peaks{ 1 });
    for (const std::string& damaged :
         { std::string(), std::string("null"), std::string("[]"), std::string("{\"fileSize\":5000"), record("AACAPw="),
           record("AAC!Pw=="), record("AACAPx=="), record("AACA====", "5000"), record("AACAPw==", "5000.5"),
           record("AACAPw==", "99999999999999999999"), record("AACAPw==", "\"5000\""), record("AACAPw==", "5000", "null"),
           record(nan), record(loud), std::string(R"({"fileSize":5000,"lastAccessed":1,"samplesData":""})") }) {
        defaults.setData(key, damaged);
        EXPECT_EQ(cache.get("/a.wav"), std::nullopt) << damaged;
        EXPECT_EQ(defaults.data(key), damaged);
    }
    EXPECT_EQ((defaults.setData(key, record("")), cache.get("/a.wav")), Peaks{});
}

// ---- Limits ----

TEST_F(WaveformCacheTest, LimitsAreKeptAndNoLimitIsNotTheDefault)
{
    using Age = std::optional<double>;
    using Size = std::optional<std::int64_t>;
    EXPECT_EQ(defaults.boolean(WaveformCache::hasMaxAgeKey), true);
    EXPECT_EQ(defaults.real("waveformCacheSettings.maxAge"), 15'552'000);
    EXPECT_EQ(defaults.boolean("waveformCacheSettings.hasMaxSize"), true);
    EXPECT_EQ(defaults.integer("waveformCacheSettings.maxSize"), 104'857'600);

    cache.setMaxAgeSeconds(std::nullopt);
    cache.setMaxTotalBytes(5);
    EXPECT_EQ(defaults.integer("waveformCacheSettings.maxAge"), 0);
    EXPECT_EQ(made().maxAgeSeconds(), Age());
    EXPECT_EQ(made().maxTotalBytes(), Size(5));

    for (const std::int64_t none : { 0, -5 }) {
        defaults.setInteger(WaveformCache::maxSizeKey, none);
        defaults.setInteger(WaveformCache::maxAgeKey, none);
        EXPECT_EQ(made().maxTotalBytes(), Size());
        EXPECT_EQ(made().maxAgeSeconds(), Age());
    }
    defaults.setString(WaveformCache::maxSizeKey, "100");
    EXPECT_EQ(made().maxTotalBytes(), Size());
    defaults.setString(WaveformCache::hasMaxSizeKey, "true");
    EXPECT_EQ(made().maxTotalBytes(), Size(104'857'600));
}

TEST(WaveformCacheEviction, TheOldestGoFirst)
{
    const auto record = [](const char* key, double lastAccessed, std::int64_t bytes = 400) {
        WaveformCacheEntry entry;
        entry.lastAccessed = lastAccessed;
        return WaveformCache::Record{ key, entry, bytes };
    };
    using Keys = std::set<std::string>;
    const std::vector<WaveformCache::Record> three{ record("a", 1), record("b", 3), record("c", 2) };
    EXPECT_EQ(WaveformCache::evictedKeys(three, { {}, 1000 }, 5), Keys{ "a" });
    EXPECT_EQ(WaveformCache::evictedKeys(three, { {}, 1200 }, 5), Keys{});
    EXPECT_EQ(WaveformCache::evictedKeys(three, { {}, 799 }, 5), (Keys{ "a", "c" }));
    EXPECT_EQ(WaveformCache::evictedKeys(three, { {}, 1 }, 5), (Keys{ "a", "b", "c" }));
    EXPECT_EQ(WaveformCache::evictedKeys(three, {}, 1e9), Keys{});
    EXPECT_EQ(WaveformCache::evictedKeys({ record("old", 89.5), record("edge", 90) }, { 10, {} }, 100), Keys{ "old" });
    // What is too old does not count for the size.
    EXPECT_EQ(WaveformCache::evictedKeys({ record("old", 0), record("x", 95), record("y", 96) }, { 10, 800 }, 100),
              Keys{ "old" });
    EXPECT_EQ(WaveformCache::evictedKeys({ record("first", 1), record("second", 1), record("third", 1) }, { {}, 800 }, 5),
              Keys{ "first" });
}

TEST_F(WaveformCacheTest, StoringEvictsWhatCanBeReadAndLeavesTheRest)
{
    for (const char* path : { "/b", "/c", "/d" })
        files.files[path] = { 1, 1 };
    cache.set(peaks, "/b");
    now = 1001;
    cache.set(peaks, "/a.wav");
    const std::int64_t size = cache.totalBytes() / 2;
    // A record of another writer is as good as ours; what is none survives, and counts in the statistics only.
    defaults.setData("waveformCache./c", R"({"lastAccessed":1,"samplesData":"","modDate":1,"fileSize":1})");
    defaults.setData("waveformCache./broken", R"({"samplesData":"####","fileSize":1,"lastAccessed":0,"modDate":1})");
    defaults.setData("waveformCache./nan", R"({"fileSize":1,"lastAccessed":nan,"modDate":1,"samplesData":""})");
    defaults.setData("waveformCache./inf", R"({"fileSize":1,"lastAccessed":-inf,"modDate":1,"samplesData":""})");
    defaults.setData("waveformCache./cut", R"({"fileSize":1,"lastAccessed":0,"modDate":1,"samplesData":"AAA)");
    defaults.setString("waveformCache./text", "no data");
    EXPECT_EQ(cache.entryCount(), 8);

    cache.setMaxTotalBytes(2 * size + size / 2);
    now = 1002;
    cache.set(peaks, "/d");
    EXPECT_THAT(defaults.keysWithPrefix(WaveformCache::cacheKeyPrefix),
                UnorderedElementsAre("waveformCache./a.wav", "waveformCache./broken", "waveformCache./d", "waveformCache./text",
                                     "waveformCache./nan", "waveformCache./inf", "waveformCache./cut"));

    cache.setMaxTotalBytes(10);
    cache.set(peaks, "/d");
    EXPECT_FALSE(cache.get("/d")) << "larger than all that may be kept";

    cache.clearAll();
    EXPECT_EQ(cache.entryCount(), 0);
    EXPECT_EQ(cache.totalBytes(), 0);
    EXPECT_EQ(defaults.integer(WaveformCache::maxSizeKey), 10);
}

TEST(Base64, IsStandardAndStrict)
{
    const std::map<std::string, std::string> pairs{
        { "", "" }, { "f", "Zg==" }, { "fo", "Zm8=" }, { "foo", "Zm9v" }, { "foob", "Zm9vYg==" }, { "\xFB\xEF\xFF", "++//" },
    };
    for (const auto& [bytes, text] : pairs) {
        EXPECT_EQ(encodeBase64(bytes), text);
        EXPECT_EQ(decodeBase64(text), bytes);
    }
    for (const char* wrong : { "Zg=", "Zg", "Zh==", "Zm9=", "Z===", "====", "Zm9v\n", "Zm-v", "Zg==Zg==" })
        EXPECT_EQ(decodeBase64(wrong), std::nullopt) << wrong;
}

}  // namespace
}  // namespace quillet
