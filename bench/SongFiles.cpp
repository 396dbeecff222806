#include "bench/SongFiles.h"

#include "tests/support/AudioFixtures.h"

#include <cstdio>
#include <filesystem>

namespace quillet {

const std::vector<SongFormat>& songFormats()
{
    static const std::vector<SongFormat> all{
        { "WAV", "wav", { "-c:a", "copy" }, true },
        { "FLAC", "flac", {}, true },
        { "MP3, constant rate", "cbr.mp3", { "-b:a", "192k" }, true },
        { "MP3, variable rate", "vbr.mp3", { "-q:a", "2" }, true },
        { "M4A", "m4a", { "-b:a", "160k", "-aac_pns", "0" }, false },
        { "Ogg Vorbis", "ogg", { "-c:a", "libvorbis", "-q:a", "5" }, true },
        { "Opus", "opus", { "-c:a", "libopus", "-b:a", "128k" }, true },
    };
    return all;
}

FilePath madeSong(const FilePath& folder, int minutes, const SongFormat& format)
{
    std::filesystem::create_directories(folder);
    const FilePath source = folder / (std::to_string(minutes) + ".source.wav");
    const FilePath target = folder / (std::to_string(minutes) + "." + format.extension);
    if (std::filesystem::exists(target))
        return target;
    std::fprintf(stderr, "Making %s\n", target.c_str());
    if (!std::filesystem::exists(source)) {
        const FilePath minute = folder / "minute.wav";
        encodeAudio(livelySignal(44'100, 2, 60), minute, {});
        runFfmpeg({ "-stream_loop", std::to_string(minutes - 1), "-i", minute, "-c:a", "copy", source });
    }
    std::vector<std::string> command{ "-i", source };
    command.insert(command.end(), format.arguments.begin(), format.arguments.end());
    // Under another name until it is whole: a run may be called off.
    const FilePath part = folder / (std::string("part.") + format.extension);
    command.push_back(part);
    runFfmpeg(command);
    std::filesystem::rename(part, target);
    return target;
}

}  // namespace quillet
