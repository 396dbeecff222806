// What computing a waveform costs: the wall time of WaveformGenerator::extract as a ratio to that of decoding the same file
// with the ffmpeg command on one thread (`ffmpeg -v error -threads 1 -i FILE -f null -`), and the memory it takes.
//
//   quillet-bench-waveform FOLDER [RUNS]
//
// Of RUNS (5) alternating runs of both the fastest count. The files are made in FOLDER once (some 1.5 GB) and used again.

#include "app/waveform/WaveformGenerator.h"
#include "bench/SongFiles.h"
#include "platform/media/FfmpegAmplitudeReader.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

namespace {

using namespace quillet;
using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point begin) { return std::chrono::duration<double>(Clock::now() - begin).count(); }

struct Cost {
    double seconds;
    double peakMegabytes;
};

/// Runs `work` in a process of its own, whose memory can be told.
template <typename Work> Cost costOf(Work work)
{
    const auto begin = Clock::now();
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(1);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fputs("A run failed.\n", stderr);
        std::exit(1);
    }
    return { secondsSince(begin), static_cast<double>(usage.ru_maxrss) / 1024 };
}

Cost generate(const FilePath& path, int threads)
{
    return costOf([&] {
        FfmpegAmplitudeReaderOpener opener;
        const auto peaks = WaveformGenerator::extract({ opener, threads, {} }, path, [](double, const std::string&) { });
        _exit(peaks && peaks->size() >= 2000 ? 0 : 1);
    });
}

Cost decode(const FilePath& path)
{
    return costOf([&] {
        execlp("ffmpeg", "ffmpeg", "-nostdin", "-v", "error", "-threads", "1", "-i", path.c_str(), "-f", "null", "-", nullptr);
    });
}

void measure(const FilePath& path, const std::string& name, int runs)
{
    const int cores = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    Cost peer{ 1e9, 0 }, sequential{ 1e9, 0 }, parallel{ 1e9, 0 };
    const auto keepBest = [](Cost& best, const Cost& cost) {
        best = { std::min(best.seconds, cost.seconds), std::max(best.peakMegabytes, cost.peakMegabytes) };
    };
    for (int run = 0; run < runs; ++run) {
        keepBest(peer, decode(path));
        keepBest(parallel, generate(path, cores));
        keepBest(sequential, generate(path, 1));
    }
    std::printf("| %s | %.3f | %.3f | %.2f | %.2f | %.0f |\n", name.c_str(), peer.seconds, parallel.seconds,
                parallel.seconds / peer.seconds, sequential.seconds / peer.seconds, parallel.peakMegabytes);
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fputs("usage: quillet-bench-waveform FOLDER [RUNS]\n", stderr);
        return 2;
    }
    const int runs = argc > 2 ? std::atoi(argv[2]) : 5;
    std::puts("| file | ffmpeg s | waveform s | ratio | ratio on one thread | peak MB |");
    for (const int minutes : { 5, 60 })
        for (const SongFormat& format : songFormats())
            measure(madeSong(argv[1], minutes, format), std::to_string(minutes) + " min " + format.name, runs);
    return 0;
}
