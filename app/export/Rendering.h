// Writes what would be played into a file, through the same graph, faster than real time.
// Threads: one, whichever; it returns when it is done, and reads and writes disks meanwhile. Handlers are called on it.
#pragma once

#include "app/export/PlaybackOptions.h"
#include "platform/media/AudioEncoder.h"
#include "platform/media/AudioFile.h"

#include <expected>
#include <functional>
#include <string>

namespace quillet {

struct RenderHandlers {
    /// `fraction` is 0 to 1 and rises from call to call, thousands of them a second.
    std::function<void(double fraction)> progress;
    /// Asked as often: true ends the work.
    std::function<bool()> isCancelled;
};

enum class RenderEnd { finished, cancelled };

/// What reads songs, and what makes files of other kinds than WAV.
struct RenderMedia {
    AudioFileOpener& opener;
    AudioEncoderMaker& encoders;
};

/// Or a sentence for the user. Unless it has finished nothing is left under the output's name, and what was there stays.
[[nodiscard]] std::expected<RenderEnd, std::string> renderToFile(const RenderOptions& options, const RenderMedia& media,
                                                                 const RenderHandlers& handlers);

}  // namespace quillet
