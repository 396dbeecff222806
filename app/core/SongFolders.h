// Which songs are meant when files and folders are named: those of a folder are found on the disk, whatever it holds.
// Threads: callable from every thread that may wait for a disk.
#pragma once

#include "platform/base/FilePath.h"

#include <cstddef>
#include <stop_token>
#include <vector>

namespace quillet {

/// No more are taken.
inline constexpr std::size_t mostListedSongs = 2000;
/// How many folders deep a folder is gone through, itself not counted.
inline constexpr int deepestSongFolder = 4;

/// Each once, by its normal path, in the order of `paths`. A folder gives its songs and then those of its sub-folders, in
/// natural order (2 before 10); what is hidden in it does not count. A file counts if its name says that it is a song, whether
/// it exists or not. Folders that cannot be read give nothing. After a stop the answer is any part of it.
[[nodiscard]] std::vector<FilePath> songsIn(const std::vector<FilePath>& paths, const std::stop_token& stop);

}  // namespace quillet
