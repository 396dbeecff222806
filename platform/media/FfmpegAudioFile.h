// AudioFile on FFmpeg's libraries: any format they decode, entered exactly. It keeps the last fraction of a second that it
// decoded, so that reading on and reading the same short window again decode nothing twice; nothing else of the sound stays in
// memory.
// Threads: as AudioFile and AudioFileOpener say.
#pragma once

#include "platform/media/AudioFile.h"

namespace quillet {

class FfmpegAudioFileOpener final : public AudioFileOpener {
public:
    /// Finds the exact length too, which takes a look at the file's tail, and in a bare stream (MP3) at all of its packets.
    [[nodiscard]] std::expected<std::unique_ptr<AudioFile>, AudioFileError> open(const FilePath& path) override;
};

}  // namespace quillet
