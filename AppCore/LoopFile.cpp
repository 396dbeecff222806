#include "AppCore/LoopFile.h"

#include "AppCore/Base64.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace quillet {
namespace {

using nlohmann::json;

constexpr int version = 1;
constexpr const char* versionName = "quilletLoops";
/// An encoder adds some silence at the ends, never more.
constexpr double maxSecondsApart = 0.25;
/// Mean difference of the levels. Encodings of one recording differ by less than 1, recordings by 10 and more.
constexpr double maxLevelsApart = 4;

}  // namespace

SongFingerprint fingerprintOf(std::span<const float> peaks, double seconds)
{
    SongFingerprint print{ seconds, {} };
    if (peaks.empty())
        return print;
    const auto placeOf = [&](std::size_t level) { return level * peaks.size() / SongFingerprint::levelCount; };
    double loudest = 0;
    std::vector<double> means;
    for (std::size_t i = 0; i < SongFingerprint::levelCount; ++i) {
        const auto part = peaks.subspan(placeOf(i), std::max<std::size_t>(placeOf(i + 1) - placeOf(i), 1));
        double sum = 0;
        for (const float peak : part)
            sum += static_cast<double>(peak);
        means.push_back(sum / static_cast<double>(part.size()));
        loudest = std::max(loudest, means.back());
    }
    for (const double mean : means)
        print.levels.push_back(static_cast<std::uint8_t>(loudest > 0 ? std::lround(255 * std::max(mean, 0.0) / loudest) : 0));
    return print;
}

bool areOfOneSong(const SongFingerprint& one, const SongFingerprint& other)
{
    if (std::abs(one.seconds - other.seconds) > maxSecondsApart || one.levels.size() != other.levels.size())
        return false;
    double apart = 0;
    for (std::size_t i = 0; i < one.levels.size(); ++i)
        apart += std::abs(one.levels[i] - other.levels[i]);
    return apart <= maxLevelsApart * static_cast<double>(one.levels.size());
}

std::string encodeLoopFile(const LoopFile& file)
{
    const std::string levels(file.song.levels.begin(), file.song.levels.end());
    Practice practice;
    practice.loops = file.loops;
    const json object{
        { versionName, version },
        { "song", { { "name", file.songName }, { "seconds", file.song.seconds }, { "levels", encodeBase64(levels) } } },
        { "loops", json::parse(encodePractice(practice))["loops"] },
    };
    return object.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

std::expected<LoopFile, LoopFileError> decodeLoopFile(std::string_view text)
{
    const json object = text.size() <= LoopFile::maxBytes ? json::parse(text, nullptr, false) : json();
    const json written = object.is_object() ? object.value(versionName, json()) : json();
    if (!written.is_number_integer())
        return std::unexpected(LoopFileError::isNoLoopFile);
    if (written > version)
        return std::unexpected(LoopFileError::isNewer);
    LoopFile file;
    file.loops = decodePractice(text)->loops;
    const json song = object.value("song", json());
    if (!song.is_object())
        return file;
    if (const json name = song.value("name", json()); name.is_string())
        file.songName = loopName(name.get<std::string>());
    if (const json seconds = song.value("seconds", json()); seconds.is_number())
        file.song.seconds = seconds.get<double>();
    if (const json levels = song.value("levels", json()); levels.is_string()) {
        const std::string bytes = decodeBase64(levels.get<std::string>()).value_or("");
        if (bytes.size() == SongFingerprint::levelCount)
            file.song.levels.assign(bytes.begin(), bytes.end());
    }
    return file;
}

LoopMerge mergeLoops(std::vector<NamedLoop> present, const std::vector<NamedLoop>& others, double seconds)
{
    LoopMerge merge{ .loops = std::move(present) };
    for (NamedLoop loop : others) {
        loop.region.end = std::min(loop.region.end, seconds);
        if (loop.region.isEmpty())
            ++merge.beyondEnd;
        else if (std::ranges::find(merge.loops, loop) != merge.loops.end())
            ++merge.alreadyThere;
        else if (merge.loops.size() >= Practice::maxLoops)
            ++merge.tooMany;
        else {
            merge.loops.push_back(std::move(loop));
            ++merge.added;
        }
    }
    return merge;
}

}  // namespace quillet
