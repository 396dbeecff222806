// What the waveform cache costs when it is full: a database of 100 MiB, some 9000 records, every `set` pushing one out.
//
//   quillet-bench-waveform-cache [ROUNDS]
//
// Prints the median and the largest time of each operation over ROUNDS (50), in milliseconds. The database is made in the
// temporary directory and removed.

#include "AppCore/WaveformCache.h"
#include "platform/defaults/SqliteDefaultsDomain.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace quillet;

/// Every path is a file that never changes.
class SteadyFiles final : public FileAttributesReader {
public:
    [[nodiscard]] std::optional<FileAttributes> attributes(const FilePath&) const override { return FileAttributes{ 1, 1 }; }
};

FilePath song(int number) { return "/home/musician/Music/An album of some length/Song " + std::to_string(number) + ".flac"; }

void report(const char* name, int rounds, const std::function<void(int round)>& operation)
{
    std::vector<double> milliseconds;
    for (int round = 0; round < rounds; ++round) {
        const auto begin = std::chrono::steady_clock::now();
        operation(round);
        milliseconds.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count());
    }
    std::ranges::sort(milliseconds);
    std::printf("| %s | %.2f | %.2f |\n", name, milliseconds[milliseconds.size() / 2], milliseconds.back());
}

}  // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 50;
    const TemporaryFolder folder;
    SqliteDefaultsDomain defaults(folder / "defaults.sqlite");
    const SteadyFiles files;
    WaveformCache cache(defaults, files);
    std::mt19937 random(1);
    std::vector<float> peaks(2001);
    std::ranges::generate(peaks, [&] { return static_cast<float>(random()) / 4294967296.0F; });

    cache.setMaxTotalBytes(std::nullopt);
    cache.set(peaks, song(0));
    const auto records = static_cast<int>(WaveformCache::defaultMaxTotalBytes / cache.totalBytes());
    const std::string record = *defaults.data("waveformCache." + song(0).native());
    for (int i = 1; i < records; ++i)
        defaults.setData("waveformCache." + song(i).native(), record);
    cache.setMaxTotalBytes(WaveformCache::defaultMaxTotalBytes);
    std::printf("%lld records, %.1f MiB\n\n| operation | median ms | largest ms |\n|---|---|---|\n",
                static_cast<long long>(cache.entryCount()), static_cast<double>(cache.totalBytes()) / 1048576);

    report("`set`, with eviction", rounds, [&](int round) { cache.set(peaks, song(records + round)); });
    report("`get`", rounds, [&](int round) {
        if (!cache.get(song(records + round)))
            std::abort();
    });
    report("`entryCount`", rounds, [&](int) { static_cast<void>(cache.entryCount()); });
    report("`totalBytes`", rounds, [&](int) { static_cast<void>(cache.totalBytes()); });
    return cache.totalBytes() <= WaveformCache::defaultMaxTotalBytes ? 0 : 1;
}
