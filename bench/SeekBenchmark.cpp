// What opening a file and jumping in it cost, by format and length: opening, a jump with 4096 frames read, and a held window of
// 0.08 s read once more. Where libsndfile reads the format its jump is measured in the same run, for the ratio.
//
//   QUILLET_BENCH_FILES=FOLDER quillet-bench-seek [--benchmark_filter=...]
//
// The files are made in FOLDER once (some 2 GB, a few minutes) and used again later.

#include "bench/SongFiles.h"
#include "platform/media/FfmpegAudioFile.h"

#include <benchmark/benchmark.h>
#include <sndfile.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace quillet;
using Clock = std::chrono::steady_clock;

std::unique_ptr<AudioFile> opened(const FilePath& path)
{
    auto file = FfmpegAudioFileOpener().open(path);
    if (!file) {
        std::fprintf(stderr, "%s\n", describe(file.error(), path).c_str());
        std::exit(1);
    }
    return std::move(*file);
}

/// Times each iteration of `step` and gives their median besides the mean.
template <typename Step> void measure(benchmark::State& state, Step step)
{
    std::vector<double> milliseconds;
    for ([[maybe_unused]] auto _ : state) {
        const auto begin = Clock::now();
        step();
        const std::chrono::duration<double> taken = Clock::now() - begin;
        state.SetIterationTime(taken.count());
        milliseconds.push_back(1000 * taken.count());
    }
    if (milliseconds.empty())
        return;
    const auto middle = milliseconds.begin() + static_cast<std::ptrdiff_t>(milliseconds.size() / 2);
    std::nth_element(milliseconds.begin(), middle, milliseconds.end());
    state.counters["median_ms"] = *middle;
}

constexpr std::int64_t jumpFrames = 4096;

class Places {
public:
    explicit Places(std::int64_t length)
        : m_place(0, length - jumpFrames)
    {
    }
    std::int64_t next() { return m_place(m_random); }

private:
    std::mt19937_64 m_random{ 1 };
    std::uniform_int_distribution<std::int64_t> m_place;
};

void benchOpen(benchmark::State& state, const FilePath& path)
{
    measure(state, [&] { benchmark::DoNotOptimize(opened(path)); });
}

void benchJump(benchmark::State& state, const FilePath& path)
{
    const auto file = opened(path);
    Places places(file->length());
    std::vector<float> stereo(2 * jumpFrames);
    measure(state, [&] { benchmark::DoNotOptimize(file->read(places.next(), stereo)); });
}

void benchHoldAgain(benchmark::State& state, const FilePath& path)
{
    const auto file = opened(path);
    std::vector<float> stereo(2 * static_cast<std::size_t>(0.08 * file->sampleRate()));
    const std::int64_t place = file->length() / 2;
    measure(state, [&] { benchmark::DoNotOptimize(file->read(place, stereo)); });
}

void benchPeerJump(benchmark::State& state, const FilePath& path)
{
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(sf_open(path.c_str(), SFM_READ, &info), &sf_close);
    if (file == nullptr) {
        state.SkipWithError("libsndfile cannot read this file");
        return;
    }
    Places places(info.frames);
    std::vector<float> stereo(2 * jumpFrames);
    measure(state, [&] {
        sf_seek(file.get(), places.next(), SEEK_SET);
        benchmark::DoNotOptimize(sf_readf_float(file.get(), stereo.data(), jumpFrames));
    });
}

using Bench = void (*)(benchmark::State&, const FilePath&);

void registerOne(const std::string& what, const std::string& name, const FilePath& path, Bench bench)
{
    benchmark::RegisterBenchmark((what + "/" + name).c_str(), [bench, path](benchmark::State& state) { bench(state, path); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const char* folder = std::getenv("QUILLET_BENCH_FILES");
    if (benchmark::ReportUnrecognizedArguments(argc, argv) || folder == nullptr) {
        std::fputs("usage: QUILLET_BENCH_FILES=FOLDER quillet-bench-seek [--benchmark_filter=...]\n", stderr);
        return 2;
    }
    for (const int minutes : { 5, 60 })
        for (const SongFormat& format : songFormats()) {
            const FilePath path = madeSong(folder, minutes, format);
            const std::string name = std::to_string(minutes) + "min." + format.extension;
            registerOne("open", name, path, benchOpen);
            registerOne("jump", name, path, benchJump);
            registerOne("hold-again", name, path, benchHoldAgain);
            if (format.sndfileReadsIt)
                registerOne("libsndfile-jump", name, path, benchPeerJump);
        }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
