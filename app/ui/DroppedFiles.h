// The files that something dragged from elsewhere carries. Their names are bytes and need not be text.
// Threads: main thread.
#pragma once

#include "platform/base/FilePath.h"

#include <optional>
#include <vector>

class QMimeData;

namespace quillet {

/// The local files, in their order.
[[nodiscard]] std::vector<FilePath> droppedFiles(const QMimeData& data);

/// The first of them that the program opens.
[[nodiscard]] std::optional<FilePath> firstAudioFile(const QMimeData& data);

}  // namespace quillet
