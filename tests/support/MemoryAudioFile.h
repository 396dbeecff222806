// An audio file that is a signal in memory, for tests that need to know every sample. It can be told to end early, as a damaged
// file does, and to fail as a disk does.
// Threads: as AudioFile says; `failReads` anywhere.
#pragma once

#include "platform/media/AudioFile.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

namespace quillet {

class MemoryAudioFile final : public AudioFile {
public:
    /// `stereo` holds interleaved frames.
    MemoryAudioFile(int sampleRate, std::vector<float> stereo)
        : m_sampleRate(sampleRate),
          m_stereo(std::move(stereo))
    {
    }

    /// `frames` frames of `signal(seconds)`, alike on both channels.
    MemoryAudioFile(int sampleRate, std::int64_t frames, const std::function<double(double)>& signal)
        : m_sampleRate(sampleRate)
    {
        m_stereo.reserve(static_cast<std::size_t>(2 * frames));
        for (std::int64_t i = 0; i < frames; ++i) {
            const auto value = static_cast<float>(signal(static_cast<double>(i) / sampleRate));
            m_stereo.insert(m_stereo.end(), { value, value });
        }
    }

    [[nodiscard]] std::int64_t length() const override { return static_cast<std::int64_t>(m_stereo.size()) / 2; }
    [[nodiscard]] int sampleRate() const override { return m_sampleRate; }
    [[nodiscard]] int channelCount() const override { return 2; }

    [[nodiscard]] std::int64_t read(std::int64_t firstFrame, std::span<float> stereo) override
    {
        std::this_thread::sleep_for(m_readTime);
        const std::int64_t left = std::max<std::int64_t>(0, std::min(m_readable, length()) - firstFrame);
        const std::int64_t count = std::min(left, static_cast<std::int64_t>(stereo.size()) / 2);
        if (count > 0 && m_readsToFail.load() > 0) {
            --m_readsToFail;
            ++m_readErrors;
            std::fill_n(stereo.begin(), 2 * count, 0.0F);
        } else {
            std::copy_n(m_stereo.begin() + 2 * firstFrame, 2 * count, stereo.begin());
        }
        return count;
    }

    [[nodiscard]] std::int64_t readErrors() const override { return m_readErrors.load(); }

    [[nodiscard]] float left(std::int64_t frame) const { return m_stereo[static_cast<std::size_t>(2 * frame)]; }
    /// From now on the file reads only up to this frame.
    void breakAt(std::int64_t frame) { m_readable = frame; }
    /// Every read takes that long.
    void setReadTime(std::chrono::milliseconds time) { m_readTime = time; }
    /// The next `count` reads that would give something are refused by the disk: silence of the same length.
    void failReads(int count) { m_readsToFail = count; }

private:
    int m_sampleRate;
    std::vector<float> m_stereo;
    std::int64_t m_readable = INT64_MAX;
    std::chrono::milliseconds m_readTime{ 0 };
    std::atomic<int> m_readsToFail = 0;
    std::atomic<std::int64_t> m_readErrors = 0;
};

}  // namespace quillet
