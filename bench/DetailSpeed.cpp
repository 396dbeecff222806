// How soon a zoomed view of a song is there in full: at the first look, which opens the file, and after a jump while the rest
// is still being read; how long the whole song takes; and what the processor takes to draw it at 50x, 3840 pixels wide.
//
//   quillet-bench-detail FOLDER [RUNS]
//
// Of RUNS (5) runs the median counts; the slowest is told too. The files are made in FOLDER once (some 1.5 GB) and used again.

#include "app/waveform/DetailLoader.h"
#include "app/waveform/WaveformDetailPainter.h"
#include "bench/SongFiles.h"
#include "platform/media/FfmpegAmplitudeReader.h"
#include "platform/schedule/QtScheduler.h"
#include "platform/schedule/ThreadRunner.h"

#include <QCoreApplication>
#include <QImage>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

namespace {

using namespace quillet;
using Clock = std::chrono::steady_clock;

constexpr double zoom = 50;
constexpr QSize viewSize(3840, 600);

double millisecondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

double processorMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

bool isThere(const WaveformDetail* detail, const SongPart& part)
{
    if (detail == nullptr)
        return false;
    const auto length = static_cast<double>(detail->layout().length());
    const double chunk = static_cast<double>(detail->layout().chunkFrames());
    const auto chunks = static_cast<int>((part.end - part.first) * length / chunk) + 1;
    for (int number = 0; number < chunks; ++number) {
        const double frame = part.first * length + number * chunk;
        if (frame < part.end * length && !detail->column(frame, frame + 1))
            return false;
    }
    return detail->column(part.end * length - 1, part.end * length).has_value();
}

/// Milliseconds since `begin` when `part` is there, the loop being turned.
double wait(const DetailLoader& loader, const SongPart& part, Clock::time_point begin)
{
    while (!isThere(loader.detail(), part))
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return millisecondsSince(begin);
}

struct Figures {
    std::vector<double> first, jump, whole, paint;
};

double paintOnce(QImage& image, const WaveformDetail& detail, double pan)
{
    const double begin = processorMilliseconds();
    const WaveformCoordinates coordinates{ 1, static_cast<double>(viewSize.width()), zoom, pan };
    static_cast<void>(paintDetail(image, detail, coordinates, { 0.2, 0.7 },
                                  { Qt::magenta, Qt::darkMagenta, Qt::gray, Qt::darkGray, Qt::black }));
    return processorMilliseconds() - begin;
}

void runOnce(const FilePath& path, QtScheduler& scheduler, Figures& figures)
{
    FfmpegAmplitudeReaderOpener opener;
    ThreadRunner background;
    DetailLoader loader({ opener, background, scheduler });
    loader.onChange([](const auto&) { });
    loader.setFile(path);
    const SongPart first{ 0.3, 0.3 + 1 / zoom };
    const SongPart second{ 0.77, 0.77 + 1 / zoom };
    const auto begin = Clock::now();
    loader.look(first);
    figures.first.push_back(wait(loader, first, begin));
    const auto jumped = Clock::now();
    loader.look(second);
    figures.jump.push_back(wait(loader, second, jumped));
    figures.whole.push_back(wait(loader, {}, begin));
    QImage image(viewSize, QImage::Format_RGB32);
    for (int frame = 0; frame < 20; ++frame)
        figures.paint.push_back(paintOnce(image, *loader.detail(), 1000.0 * frame));
}

std::string text(std::vector<double> times)
{
    std::ranges::sort(times);
    char line[64];
    std::snprintf(line, sizeof line, "%.1f (%.1f)", times[times.size() / 2], times.back());
    return line;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fputs("usage: quillet-bench-detail FOLDER [RUNS]\n", stderr);
        return 2;
    }
    const QCoreApplication application(argc, argv);
    QtScheduler scheduler;
    const int runs = argc > 2 ? std::atoi(argv[2]) : 5;
    std::puts("| file | first look ms | jump ms | whole song ms | painting ms |");
    for (const int minutes : { 5, 60 })
        for (const SongFormat& format : songFormats()) {
            const FilePath path = madeSong(argv[1], minutes, format);
            Figures figures;
            for (int run = 0; run < runs; ++run)
                runOnce(path, scheduler, figures);
            std::printf("| %d min %s | %s | %s | %s | %s |\n", minutes, format.name, text(figures.first).c_str(),
                        text(figures.jump).c_str(), text(figures.whole).c_str(), text(figures.paint).c_str());
            std::fflush(stdout);
        }
    return 0;
}
