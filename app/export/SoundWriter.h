// A file that sound is written to as it comes in; it has its name once it is whole.
// Threads: one thread at a time.
#pragma once

#include "app/export/OutputFile.h"
#include "platform/media/AudioEncoder.h"

#include <expected>
#include <memory>
#include <span>

namespace quillet {

class SoundWriter {
public:
    virtual ~SoundWriter() = default;
    /// Appends frames (left, right, left, …; full scale is ±1). After a failure only destruction makes sense.
    [[nodiscard]] virtual std::expected<void, WriteError> write(std::span<const float> stereo) = 0;
    /// Completes the file, brings it to the disk and gives it its name. Once, and nothing can be written afterwards.
    [[nodiscard]] virtual std::expected<void, WriteError> finish() = 0;
};

/// The rate at which a song of `sampleRate` is written to `target`.
[[nodiscard]] int writtenRate(const FilePath& target, int sampleRate);

/// By the end of the target's name: FLAC, MP3, M4A or Opus with the song's tags; a WAV file for every other name. Fails if
/// nothing can be written there. `sampleRate` is one that `writtenRate` answers; `encoders` outlives the writer.
[[nodiscard]] std::expected<std::unique_ptr<SoundWriter>, WriteError>
makeSoundWriter(const FilePath& target, int sampleRate, const SongTags& tags, AudioEncoderMaker& encoders);

}  // namespace quillet
