// What playing costs: CPU time of the whole road of the samples (decoding, mixing, stretching, equalising, all threads) per
// second of sound heard, as a ratio to Rubber Band alone on the same material in the same run. Prints a Markdown table.
//
//   quillet-bench-engine-cost SONG.wav [seconds]

#include "platform/audio/OfflineOutput.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/media/FfmpegAudioFile.h"
#include "platform/schedule/VirtualScheduler.h"

#include <rubberband/RubberBandStretcher.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace {

using namespace quillet;

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::shared_ptr<AudioFile> open(const char* path)
{
    auto file = FfmpegAudioFileOpener().open(path);
    if (!file) {
        std::fprintf(stderr, "%s\n", describe(file.error(), path).c_str());
        std::exit(1);
    }
    return std::move(*file);
}

/// CPU seconds per second of sound through the graph; `voices` files in step.
double graphCost(const char* path, double rate, int voices, double seconds)
{
    VirtualScheduler scheduler;
    OfflineOutput output;
    PlaybackGraph graph(output, scheduler);
    auto sum = graph.makeMixer();
    graph.connect(*sum, graph.timePitch());
    std::vector<std::unique_ptr<PlayerNode>> players;
    std::int64_t length = 0;
    int sampleRate = 0;
    {
        const GraphChange change(graph);
        for (int i = 0; i < voices; ++i) {
            const auto file = open(path);
            length = file->length();
            sampleRate = file->sampleRate();
            players.push_back(graph.makePlayer());
            graph.connect(*players.back(), *sum);
            players.back()->scheduleSegment(file, { 0, length }, nullptr);
            PlannedPass again;
            again.segment = { 0, length };
            again.times = PlannedPass::endless;
            players.back()->setPlan({ { again }, std::nullopt });
            players.back()->play();
        }
        graph.timePitch().setRate(rate);
        graph.prepare(sampleRate);
        graph.start();
    }
    std::vector<float> block(128);
    output.pull(block);
    const double before = cpuSeconds();
    const auto blocks = static_cast<std::int64_t>(seconds * sampleRate / 64);
    for (std::int64_t i = 0; i < blocks; ++i) {
        output.pull(block);
        scheduler.advance(64.0 / sampleRate);
    }
    return (cpuSeconds() - before) / seconds;
}

/// CPU seconds per second of sound of the stretcher by itself, fed from memory.
double stretcherCost(const char* path, double rate, double seconds)
{
    using RubberBand::RubberBandStretcher;
    const auto file = open(path);
    const int sampleRate = file->sampleRate();
    std::vector<float> stereo(static_cast<std::size_t>(2 * file->length()));
    const std::int64_t length = file->read(0, stereo);
    RubberBandStretcher stretcher(static_cast<std::size_t>(sampleRate), 2,
                                  RubberBandStretcher::OptionProcessRealTime | RubberBandStretcher::OptionEngineFiner
                                      | RubberBandStretcher::OptionPitchHighConsistency
                                      | RubberBandStretcher::OptionChannelsTogether,
                                  1 / rate);
    stretcher.setMaxProcessSize(1024);
    std::vector<float> left(1024), right(1024);
    const std::array<float*, 2> channels{ left.data(), right.data() };
    std::int64_t position = 0;
    const double before = cpuSeconds();
    for (std::int64_t produced = 0; produced < static_cast<std::int64_t>(seconds * sampleRate);) {
        const auto wanted = std::clamp<std::int64_t>(static_cast<std::int64_t>(stretcher.getSamplesRequired()), 1, 1024);
        for (std::int64_t i = 0; i < wanted; ++i, position = (position + 1) % length) {
            left[static_cast<std::size_t>(i)] = stereo[static_cast<std::size_t>(2 * position)];
            right[static_cast<std::size_t>(i)] = stereo[static_cast<std::size_t>(2 * position + 1)];
        }
        stretcher.process(channels.data(), static_cast<std::size_t>(wanted), false);
        while (stretcher.available() > 0)
            produced += static_cast<std::int64_t>(
                stretcher.retrieve(channels.data(), static_cast<std::size_t>(std::min(stretcher.available(), 1024))));
    }
    return (cpuSeconds() - before) / seconds;
}

}  // namespace

int main(int argc, char* argv[])
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s SONG.wav [seconds]\n", argv[0]);
        return 2;
    }
    const double seconds = argc > 2 ? std::atof(argv[2]) : 20;
    std::printf("| speed | Rubber Band alone, CPU s per s | stereo, CPU s per s | ratio | six stems, CPU s per s | ratio |\n");
    std::printf("|---|---|---|---|---|---|\n");
    for (const double rate : { 0.25, 0.5, 1.0, 3.0 }) {
        const double alone = stretcherCost(argv[1], rate, seconds);
        const double stereo = graphCost(argv[1], rate, 1, seconds);
        const double stems = graphCost(argv[1], rate, 6, seconds);
        std::printf("| %.0f %% | %.3f | %.3f | %.2f | %.3f | %.2f |\n", rate * 100, alone, stereo, stereo / alone, stems,
                    stems / alone);
        std::fflush(stdout);
    }
    return 0;
}
