// How loud a file is from stretch to stretch, for drawing it: sums of the absolute values of its sound, mixed down to one
// channel, or the extremes and the power of both channels. Much cheaper than reading the sound itself; it keeps none of it.
// Threads: `length` and `entersAnywhere` may be asked anywhere; the rest is confined to one thread at a time.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/media/AudioFile.h"

#include <cstdint>
#include <expected>
#include <memory>

namespace quillet {

/// What a stretch of sound looks like, both channels together; full scale is ±1.
struct SoundSummary {
    float lowest = 0;
    float highest = 0;
    /// The mean of all samples' squares.
    float meanSquare = 0;

    bool operator==(const SoundSummary&) const = default;
};

class AmplitudeReader {
public:
    virtual ~AmplitudeReader() = default;

    /// Frames of the file, exactly as AudioFile has them; at least 1.
    [[nodiscard]] virtual std::int64_t length() const = 0;
    /// Whether `enter` is cheap wherever it goes; otherwise it decodes all that comes before.
    [[nodiscard]] virtual bool entersAnywhere() const = 0;

    /// Goes to `frame`, 0 to `length()`. Has to come before the first `sum` or `summary`.
    virtual void enter(std::int64_t frame) = 0;
    /// Goes on by `frames` (at least 1, and not past the end) and answers the sum of |left + right| / 2 over them, full
    /// scale being 1 (of |left| for mono). What cannot be decoded adds nothing. The same frames have the same sum, however they
    /// were reached and cut into calls, as far as the decoder's output is the same.
    [[nodiscard]] virtual double sum(std::int64_t frames) = 0;
    /// Goes on by `frames` likewise and answers what they look like. What cannot be decoded is silence; samples that are no
    /// numbers, or absurd, count as 0.
    [[nodiscard]] virtual SoundSummary summary(std::int64_t frames) = 0;
};

/// Opens files. Threads: callable from every thread; opening reads the file and may take as long as its disk does.
class AmplitudeReaderOpener {
public:
    virtual ~AmplitudeReaderOpener() = default;
    [[nodiscard]] virtual std::expected<std::unique_ptr<AmplitudeReader>, AudioFileError> open(const FilePath& path) = 0;
};

}  // namespace quillet
