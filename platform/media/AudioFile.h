// An audio file opened for reading: stereo frames at the file's own sample rate, from any position, exact to the sample.
// Mono is doubled, more than two channels are mixed down to stereo. It holds no more of the file in memory than a decoder
// needs; it does not resample, and it knows nothing of playback.
// Threads: `length`, `sampleRate`, `channelCount`, `level` and `tags` never change and may be read anywhere, as may `readErrors`;
// `read` is confined to one thread at a time.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/media/SongTags.h"

#include <cstdint>
#include <expected>
#include <memory>
#include <span>
#include <string>

namespace quillet {

/// How loud the numbers of a file are beside full scale. `farAbove`: whole numbers that were written as floats, which are read
/// as what they were meant to be; `farBelow`: so soft that nothing is heard.
enum class SampleLevel { usual, farAbove, farBelow };

class AudioFile {
public:
    virtual ~AudioFile() = default;

    /// The exact number of frames that a decode from the start to the end yields; at least 1.
    [[nodiscard]] virtual std::int64_t length() const = 0;
    /// Frames per second of the file, 8,000 to 192,000 in practice.
    [[nodiscard]] virtual int sampleRate() const = 0;
    /// Channels stored in the file, before they become two.
    [[nodiscard]] virtual int channelCount() const = 0;
    [[nodiscard]] virtual SampleLevel level() const { return SampleLevel::usual; }
    /// What the file says of its song.
    [[nodiscard]] virtual SongTags tags() const { return {}; }

    /// Reads frames [firstFrame, firstFrame + stereo.size() / 2) into `stereo` (left, right, left, …; full scale is ±1).
    /// The same frame reads the same value however it was reached. Returns the frames read: fewer than asked only where the
    /// file ends; 0 at or past the end. What is damaged in the middle reads as silence of the same length.
    /// So does what the disk refuses to give, but only this once: it is counted in `readErrors`, each later read asks the disk
    /// again, and frames that it gives are exact.
    /// `firstFrame` is at least 0. Consecutive reads are cheap; a jump costs a few milliseconds. May touch the disk.
    [[nodiscard]] virtual std::int64_t read(std::int64_t firstFrame, std::span<float> stereo) = 0;

    /// How often the disk has refused to be read since the file was opened. Damage in what it did give is not counted.
    [[nodiscard]] virtual std::int64_t readErrors() const = 0;
};

enum class AudioFileError { notFound, notAFile, notPermitted, empty, notAudio, noAudioTrack, unreadable };

/// One sentence for the user, naming the file.
std::string describe(AudioFileError error, const FilePath& path);

/// Opens files. Threads: callable from every thread; opening reads the file and may take as long as its disk does.
class AudioFileOpener {
public:
    virtual ~AudioFileOpener() = default;
    [[nodiscard]] virtual std::expected<std::unique_ptr<AudioFile>, AudioFileError> open(const FilePath& path) = 0;
};

}  // namespace quillet
