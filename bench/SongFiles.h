// Songs of known lengths in every common format, for benchmarks. They are made in a folder once and used again later.
// Threads: main thread.
#pragma once

#include "platform/base/FilePath.h"

#include <string>
#include <vector>

namespace quillet {

struct SongFormat {
    const char* name;
    const char* extension;
    /// For ffmpeg.
    std::vector<std::string> arguments;
    /// Whether libsndfile reads it.
    bool sndfileReadsIt;
};

const std::vector<SongFormat>& songFormats();

/// The file in `folder` of so many minutes in that format. Failures end the program.
FilePath madeSong(const FilePath& folder, int minutes, const SongFormat& format);

}  // namespace quillet
