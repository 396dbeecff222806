#include "app/cli/WaveformCommand.h"

#include "app/cli/ProgressLine.h"
#include "app/export/OutputFile.h"
#include "app/ui/AppTheme.h"
#include "app/waveform/WaveformGenerator.h"
#include "app/waveform/WaveformPainter.h"
#include "platform/base/Require.h"
#include "platform/media/MediaModule.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <span>
#include <thread>
#include <utility>
#include <vector>

namespace quillet {
namespace {

constexpr int pictureWidth = 1600;
constexpr int pictureHeight = 400;
constexpr int margin = 20;

/// `sampleRate` in frames per second.
struct Shape {
    double durationSeconds;
    int sampleRate;
    std::vector<float> peaks;
};

std::expected<Shape, std::string> shapeOf(const FilePath& input)
{
    MediaModule media;
    const auto file = media.audioFiles().open(input);
    if (!file)
        return std::unexpected(describe(file.error(), input));
    const int threads = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    ProgressLine progress;
    auto peaks = WaveformGenerator::extract({ media.amplitudeReaders(), threads, {} }, input,
                                            [&](double, const std::string& message) { progress.show(message); });
    if (!peaks)
        return std::unexpected("The sound of “" + displayText(input) + "” cannot be read.");
    const int sampleRate = (*file)->sampleRate();
    return Shape{ static_cast<double>((*file)->length()) / sampleRate, sampleRate, std::move(*peaks) };
}

std::expected<int, std::string> print(const Shape& shape, const FilePath& input)
{
    const nlohmann::ordered_json object{ { "file", displayText(input) },
                                         { "durationSeconds", shape.durationSeconds },
                                         { "sampleRate", shape.sampleRate },
                                         { "peaks", shape.peaks } };
    const std::string text = object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
        return std::unexpected("The amplitudes cannot be written to standard output.");
    return 0;
}

QImage drawn(const Shape& shape)
{
    const AppTheme theme(Appearance::light);
    QImage image(pictureWidth, pictureHeight, QImage::Format_ARGB32_Premultiplied);
    image.fill(theme.card);
    QPainter painter(&image);
    painter.translate(margin, margin);
    constexpr double width = pictureWidth - 2 * margin;
    const WaveformCoordinates whole{ .duration = shape.durationSeconds, .viewWidth = width };
    paintWaveform(painter, shape.peaks, whole, pictureHeight - 2 * margin, { 0, shape.durationSeconds },
                  { AppTheme::waveformSelected, theme.waveformUnselected }, 0, width);
    return image;
}

std::expected<int, std::string> draw(const Shape& shape, const FilePath& picture)
{
    QBuffer png;
    const bool encoded = png.open(QIODevice::WriteOnly) && drawn(shape).save(&png, "PNG");
    REQUIRE(encoded);
    auto file = OutputFile::create(picture);
    if (!file)
        return std::unexpected(describe(file.error()));
    auto written = (*file)->write(std::as_bytes(std::span(png.data())));
    if (written)
        written = (*file)->finish();
    if (!written)
        return std::unexpected(describe(written.error()));
    return 0;
}

}  // namespace

std::expected<int, std::string> showWaveform(const WaveformOptions& options)
{
    const auto shape = shapeOf(options.input);
    if (!shape)
        return std::unexpected(shape.error());
    return options.picture ? draw(*shape, *options.picture) : print(*shape, options.input);
}

}  // namespace quillet
