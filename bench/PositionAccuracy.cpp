// How far the play head is from the truth while speed and pitch change: a chirp through runs of random changes, its true place
// from its frequency, beside the place that the graph reports. Prints a Markdown table; milliseconds of source time.
//
//   quillet-bench-position [RUNS]

#include "platform/audio/OfflineOutput.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/schedule/VirtualScheduler.h"
#include "tests/support/ChirpTracker.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <utility>
#include <vector>

using namespace quillet;

namespace {

constexpr double songSeconds = 20;
/// Two octaves below what the sample rate allows, so that it can be transposed up.
constexpr double lastSeconds = 10;
/// Before it there are too few periods in a window.
constexpr double firstSeconds = 0.7;
constexpr int changesPerRun = 20;

/// Whether the two halves are further apart than the chirp moves on in them.
bool jumps(std::span<const float> samples, int sampleRate)
{
    const auto first = ChirpTracker::secondsAt(samples.first(samples.size() / 2), sampleRate, 0);
    const auto second = ChirpTracker::secondsAt(samples.last(samples.size() / 2), sampleRate, 0);
    return !first || !second || std::abs(*second - *first) > 0.05;
}

/// The errors at places 10 ms apart.
std::vector<double> errorsOf(int fileRate, int outputRate, unsigned seed, bool changesPitch)
{
    VirtualScheduler scheduler;
    OfflineOutput output(outputRate);
    PlaybackGraph graph(output, scheduler);
    const auto player = graph.makePlayer();
    graph.connect(*player, graph.timePitch());
    graph.start();
    const auto file = ChirpTracker::file(fileRate, songSeconds);
    player->scheduleSegment(file, { 0, file->length() }, nullptr);
    player->play();

    std::mt19937 random(seed);
    std::uniform_real_distribution<double> rates(0.25, 3), cents(-1200, 1200), gaps(0.1, 0.6);
    std::vector<float> left;
    std::vector<double> reported;
    std::vector<std::pair<double, double>> pitches;
    double pitch = 0;
    double pitchBefore = 0;
    std::vector<float> block(128);
    for (int change = 0; change <= changesPerRun; ++change) {
        const auto blocks = static_cast<int>(gaps(random) * outputRate / 64);
        for (int i = 0; i < blocks; ++i) {
            output.pull(block);
            for (std::size_t at = 0; at < block.size(); at += 2)
                left.push_back(block[at]);
            scheduler.advance(64.0 / outputRate);
            reported.push_back(player->sampleTime().value_or(-1) / fileRate);
            pitches.emplace_back(pitch, pitchBefore);
        }
        graph.timePitch().setRate(change % 5 == 4 && !changesPitch ? 1.0 : rates(random));
        if (!changesPitch)
            continue;
        pitchBefore = std::exchange(pitch, cents(random));
        graph.timePitch().setPitch(pitch);
    }
    std::vector<double> errors;
    const std::int64_t half = outputRate / 100;
    for (std::int64_t at = half; at + half < std::ssize(left); at += outputRate / 100) {
        // The report is made at the end of its block.
        const auto number = static_cast<std::size_t>(at / 64);
        if (number == 0 || reported[number - 1] <= firstSeconds || reported[number - 1] > lastSeconds)
            continue;
        const double part = static_cast<double>(at % 64) / 64;
        const double place = reported[number - 1] + (reported[number] - reported[number - 1]) * part;
        const auto heard = std::span(left).subspan(static_cast<std::size_t>(at - half), static_cast<std::size_t>(2 * half));
        // A change of pitch is heard some 70 ms after it is made: until then it is the one before. Where it falls into the
        // window there is no frequency to read.
        if (changesPitch && jumps(heard, outputRate))
            continue;
        const auto now = ChirpTracker::secondsAt(heard, outputRate, pitches[number].first);
        const auto before = ChirpTracker::secondsAt(heard, outputRate, pitches[number].second);
        if (now && before)
            errors.push_back(1000 * std::min(std::abs(place - *now), std::abs(place - *before)));
    }
    return errors;
}

double quantile(std::vector<double>& values, double part)
{
    const auto place = values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::ranges::nth_element(values, place);
    return *place;
}

}  // namespace

int main(int argc, char* argv[])
{
    const unsigned runs = argc > 1 ? static_cast<unsigned>(std::atoi(argv[1])) : 20;
    struct Case {
        const char* name;
        int fileRate, outputRate;
        bool changesPitch;
    };
    std::printf("| | places | half of them | 90 of 100 | 99 of 100 |\n|---|---|---|---|---|\n");
    for (const Case& c : { Case{ "speed", 44100, 44100, false },
                           { "speed, 44.1 kHz to 48", 44100, 48000, false },
                           { "speed, 96 kHz", 96000, 96000, false },
                           { "speed and pitch", 44100, 44100, true } }) {
        std::vector<double> errors;
        for (unsigned seed = 1; seed <= runs; ++seed) {
            const auto more = errorsOf(c.fileRate, c.outputRate, seed, c.changesPitch);
            errors.insert(errors.end(), more.begin(), more.end());
        }
        std::printf("| %s | %zu | %.2f | %.2f | %.2f |\n", c.name, errors.size(), quantile(errors, 0.5), quantile(errors, 0.9),
                    quantile(errors, 0.99));
        std::fflush(stdout);
    }
    return 0;
}
