// Sound into a compressed file: frames in, bytes out. It opens no files; where the bytes go is its owner's business.
// Threads: an encoder is confined to one thread at a time; the maker is callable from every thread.
#pragma once

#include "platform/media/SongTags.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace quillet {

enum class AudioFormat {
    /// 24 bits, without loss.
    flac,
    mp3,
    /// AAC in an MPEG-4 file.
    m4a,
    /// In an Ogg file.
    opus,
};

/// By the end of a file's name, such as ".flac", whatever its case; nothing for any other.
[[nodiscard]] std::optional<AudioFormat> audioFormatOf(std::string_view extension);

/// The rate in Hz at which a song of `sampleRate` is to be encoded: its own, or the nearest good one that the format has.
[[nodiscard]] int encodedRate(AudioFormat format, int sampleRate);

/// Takes the bytes of an encoded file.
class EncodedOutput {
public:
    virtual ~EncodedOutput() = default;
    /// False: the encoder gives up.
    [[nodiscard]] virtual bool write(std::span<const std::byte> bytes) = 0;
    /// Goes on writing at that byte; false where that cannot be.
    [[nodiscard]] virtual bool seek(std::int64_t position) = 0;
    [[nodiscard]] virtual bool canSeek() const = 0;
};

class AudioEncoder {
public:
    virtual ~AudioEncoder() = default;
    /// Frames (left, right, left, …; full scale is ±1, what is beyond it is cut off). False after any failure.
    [[nodiscard]] virtual bool write(std::span<const float> stereo) = 0;
    /// Completes the file. Once, and nothing can be written afterwards.
    [[nodiscard]] virtual bool finish() = 0;
};

struct EncoderSettings {
    AudioFormat format = AudioFormat::flac;
    /// One that `encodedRate` answers.
    int sampleRate = 44100;
    SongTags tags;
};

class AudioEncoderMaker {
public:
    virtual ~AudioEncoderMaker() = default;
    /// `output` outlives the encoder. Null where this machine cannot encode the format.
    [[nodiscard]] virtual std::unique_ptr<AudioEncoder> make(const EncoderSettings& settings, EncodedOutput& output) = 0;
};

}  // namespace quillet
