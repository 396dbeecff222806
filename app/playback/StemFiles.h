// The files of a session's stems, opened: what the engine plays in stem mode. Opening them takes as long as the disk does, so
// it is a step of its own, off the main thread.
// Threads: `openStemFiles` on any thread that may wait.
#pragma once

#include "AppCore/StemSession.h"
#include "platform/media/AudioFile.h"

#include <memory>
#include <span>
#include <vector>

namespace quillet {

struct StemFile {
    StemSession::Stem stem;
    std::shared_ptr<AudioFile> file;
};

/// In the order of `stems`; a stem that cannot be opened is left out.
[[nodiscard]] std::vector<StemFile> openStemFiles(AudioFileOpener& opener, std::span<const StemSession::Stem> stems);

}  // namespace quillet
