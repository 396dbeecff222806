#include "app/cli/InfoCommand.h"

#include "platform/media/MediaModule.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <iomanip>
#include <locale>
#include <sstream>

namespace quillet {
namespace {

std::string asJson(const AudioFile& file, const FilePath& path)
{
    const nlohmann::ordered_json object{ { "file", displayText(path) },
                                         { "frames", file.length() },
                                         { "sampleRate", file.sampleRate() },
                                         { "channels", file.channelCount() },
                                         { "durationSeconds", static_cast<double>(file.length()) / file.sampleRate() } };
    return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

std::string asText(const AudioFile& file)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "frames: " << file.length() << "\nsample rate: " << file.sampleRate() << " Hz\nchannels: " << file.channelCount()
         << "\nduration: " << std::fixed << std::setprecision(3) << static_cast<double>(file.length()) / file.sampleRate()
         << " s\n";
    return text.str();
}

}  // namespace

std::expected<int, std::string> showInfo(const InfoOptions& options)
{
    MediaModule media;
    const auto file = media.audioFiles().open(options.input);
    if (!file)
        return std::unexpected(describe(file.error(), options.input));
    const std::string text = options.asJson ? asJson(**file, options.input) : asText(**file);
    if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
        return std::unexpected("What the file is made of cannot be written to standard output.");
    return 0;
}

}  // namespace quillet
