// The files that something dragged from elsewhere carries. Their names are bytes and need not be text.
// Threads: main thread.
#pragma once

#include "platform/base/FilePath.h"

#include <vector>

class QMimeData;

namespace quillet {

/// The local files and folders, in their order.
[[nodiscard]] std::vector<FilePath> droppedFiles(const QMimeData& data);

/// Whether any of them is a song, or may be a folder of songs: by the names alone, since a disk may not answer.
[[nodiscard]] bool mayHoldSongs(const std::vector<FilePath>& files);

}  // namespace quillet
