// Writes a WAV file (32-bit float, stereo) as it comes in, of any length. A file appears under its name only when it is whole:
// until `finish` everything goes to "<name>.quillet-<number>.part" beside it, and a writer destroyed unfinished leaves
// nothing behind. A pipe or a character device is written to directly. It neither resamples nor changes a sample.
// Threads: one thread at a time.
#pragma once

#include "platform/base/FilePath.h"

#include <cstdint>
#include <expected>
#include <memory>
#include <span>
#include <string>

namespace quillet {

/// Why a file could not be written: `number` is an errno value.
struct WavError {
    FilePath path;
    int number = 0;
};

/// One sentence for the user, naming the file.
std::string describe(const WavError& error);

class WavWriter {
public:
    /// Begins a file for `target`, which may exist (`finish` replaces it and keeps its permissions; through a symbolic link,
    /// the file it leads to). `sampleRate` is frames per second. Fails if nothing can be written there.
    [[nodiscard]] static std::expected<std::unique_ptr<WavWriter>, WavError> create(const FilePath& target, int sampleRate);

    ~WavWriter();
    WavWriter(const WavWriter&) = delete;
    WavWriter& operator=(const WavWriter&) = delete;

    /// Appends frames (left, right, left, …; full scale is ±1). After a failure only destruction makes sense.
    [[nodiscard]] std::expected<void, WavError> write(std::span<const float> stereo);

    /// Completes the file, brings it to the disk and gives it its name. Once, and nothing can be written afterwards.
    [[nodiscard]] std::expected<void, WavError> finish();

    [[nodiscard]] std::int64_t framesWritten() const { return m_frames; }

    /// The unfinished file, for a signal handler that must remove it; empty when there is none.
    [[nodiscard]] const FilePath& temporaryPath() const { return m_temporary; }

private:
    WavWriter(FilePath named, int sampleRate);

    std::expected<void, WavError> open();
    std::expected<void, WavError> openBeside();
    std::expected<void, WavError> openDirectly();
    std::expected<void, WavError> writeBytes(std::span<const std::byte> bytes);
    std::unexpected<WavError> failure(int number) const;
    void discard();

    const FilePath m_named;  // as the user named it, for messages
    const int m_sampleRate;
    FilePath m_target;
    FilePath m_temporary;
    int m_descriptor = -1;
    std::int64_t m_frames = 0;
};

}  // namespace quillet
