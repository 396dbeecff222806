// A file as if it had another sample rate: frame n of it is what the file has at n × its rate / the other rate, however it was
// reached. It keeps nothing of the file in memory but what the resampler needs.
// Threads: as AudioFile.
#pragma once

#include "platform/audio/Resampler.h"
#include "platform/media/AudioFile.h"

#include <memory>
#include <vector>

namespace quillet {

class ResampledFile final : public AudioFile {
public:
    /// `sampleRate` in Hz, other than the file's.
    ResampledFile(std::shared_ptr<AudioFile> file, int sampleRate);

    [[nodiscard]] std::int64_t length() const override { return m_length; }
    [[nodiscard]] int sampleRate() const override { return m_sampleRate; }
    [[nodiscard]] int channelCount() const override { return m_file->channelCount(); }
    [[nodiscard]] std::int64_t readErrors() const override { return m_file->readErrors(); }
    [[nodiscard]] std::int64_t read(std::int64_t firstFrame, std::span<float> stereo) override;

private:
    void enterAt(std::int64_t frame);
    void makeFrames(std::span<float> stereo);

    const std::shared_ptr<AudioFile> m_file;
    const int m_sampleRate;
    const std::int64_t m_length;
    /// So many frames of the file are exactly so many of this one: where a resampler may begin.
    const std::int64_t m_fileStep, m_step;

    // Made by the first read, on the thread that reads.
    std::unique_ptr<Resampler> m_resampler;
    std::vector<float> m_input;
    std::size_t m_used = 0;
    std::int64_t m_fileFrame = 0;
    /// The frame that comes out next; none before the first read.
    std::int64_t m_next = -1;
};

}  // namespace quillet
