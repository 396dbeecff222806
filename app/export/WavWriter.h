// Writes a WAV file (32-bit float, stereo) as it comes in, of any length, to an OutputFile. It neither resamples nor changes a
// sample.
// Threads: one thread at a time.
#pragma once

#include "app/export/SoundWriter.h"

#include <cstdint>
#include <expected>
#include <memory>
#include <span>

namespace quillet {

class WavWriter final : public SoundWriter {
public:
    /// `sampleRate` is frames per second. Fails if nothing can be written to `target`.
    [[nodiscard]] static std::expected<std::unique_ptr<WavWriter>, WriteError> create(const FilePath& target, int sampleRate);

    [[nodiscard]] std::expected<void, WriteError> write(std::span<const float> stereo) override;
    [[nodiscard]] std::expected<void, WriteError> finish() override;

    [[nodiscard]] std::int64_t framesWritten() const { return m_frames; }

    /// The unfinished file, for a signal handler that must remove it; empty when there is none.
    [[nodiscard]] const FilePath& temporaryPath() const { return m_file->temporaryPath(); }

private:
    WavWriter(std::unique_ptr<OutputFile> file, int sampleRate);

    std::unique_ptr<OutputFile> m_file;
    int m_sampleRate;
    std::int64_t m_frames = 0;
};

}  // namespace quillet
