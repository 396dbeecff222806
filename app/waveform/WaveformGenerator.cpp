#include "app/waveform/WaveformGenerator.h"

#include "platform/base/Require.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace quillet {
namespace {

constexpr std::int64_t bucketsWanted = 2000;
/// Each thread takes a stretch of the file at a time: small enough for all to end at about the same time, large enough
/// for the cost of entering them not to matter.
constexpr int stretchesPerThread = 4;

WaveformError waveformError(AudioFileError error)
{
    switch (error) {
    case AudioFileError::noAudioTrack:
        return WaveformError::noAudioTrack;
    case AudioFileError::empty:
        return WaveformError::readFailed;
    default:
        return WaveformError::unreadableFile;
    }
}

/// One run over a file, shared by its threads.
class Extraction {
public:
    Extraction(const WaveformGenerator::Resources& resources, const WaveformGenerator::Progress& progress, std::int64_t length)
        : m_resources(resources),
          m_progress(progress),
          m_length(length),
          m_bucketFrames(std::max<std::int64_t>(length / bucketsWanted, 1)),
          m_means(static_cast<std::size_t>((length + m_bucketFrames - 1) / m_bucketFrames))
    {
    }

    /// Decodes with `first`, and with more readers of the same file where that helps.
    void run(AmplitudeReader& first, const FilePath& url)
    {
        const std::size_t threads = first.entersAnywhere() ? static_cast<std::size_t>(m_resources.threads) : 1;
        m_stretches = threads == 1 ? 1 : std::min(threads * stretchesPerThread, m_means.size());
        std::vector<std::jthread> others;
        for (std::size_t i = 1; i < threads; ++i)
            others.emplace_back([this, &url] {
                // Without a reader of its own (the file is gone, say) a thread leaves its part to the others.
                const auto reader = m_resources.opener.open(url);
                if (reader && (*reader)->length() == m_length)
                    work(**reader);
            });
        work(first);
    }

    /// The means as parts of the largest; nothing if it was called off.
    [[nodiscard]] std::expected<std::vector<float>, WaveformError> result() &&
    {
        if (m_resources.programEnds.stop_requested())
            return std::unexpected(WaveformError::readFailed);
        const float largest = *std::ranges::max_element(m_means);
        if (largest > 0)
            for (float& mean : m_means)
                mean /= largest;
        return std::move(m_means);
    }

private:
    void work(AmplitudeReader& reader)
    {
        for (std::size_t stretch = m_nextStretch++; stretch < m_stretches; stretch = m_nextStretch++) {
            const std::size_t begin = stretch * m_means.size() / m_stretches;
            const std::size_t end = (stretch + 1) * m_means.size() / m_stretches;
            reader.enter(static_cast<std::int64_t>(begin) * m_bucketFrames);
            for (std::size_t bucket = begin; bucket < end && !m_resources.programEnds.stop_requested(); ++bucket) {
                const std::int64_t left = m_length - static_cast<std::int64_t>(bucket) * m_bucketFrames;
                const std::int64_t frames = std::min(m_bucketFrames, left);
                m_means[bucket] = static_cast<float>(reader.sum(frames) / static_cast<double>(frames));
                reportOneMore();
            }
        }
    }

    void reportOneMore()
    {
        const std::scoped_lock lock(m_mutex);
        ++m_done;
        const double fraction = std::min(static_cast<double>(m_done) / bucketsWanted, 1.0);
        m_progress(fraction, "Generating waveform... " + std::to_string(static_cast<int>(fraction * 100)) + "%");
    }

    const WaveformGenerator::Resources& m_resources;
    const WaveformGenerator::Progress& m_progress;
    const std::int64_t m_length;
    const std::int64_t m_bucketFrames;
    /// Each written by the one thread that has its stretch.
    std::vector<float> m_means;
    std::size_t m_stretches = 1;
    std::atomic<std::size_t> m_nextStretch = 0;
    std::mutex m_mutex;
    std::int64_t m_done = 0;  // guarded by m_mutex
};

}  // namespace

std::expected<std::vector<float>, WaveformError> WaveformGenerator::extract(const Resources& resources, const FilePath& url,
                                                                            const Progress& progress)
{
    REQUIRE(resources.threads >= 1);
    const auto reader = resources.opener.open(url);
    if (!reader)
        return std::unexpected(waveformError(reader.error()));
    Extraction extraction(resources, progress, (*reader)->length());
    extraction.run(**reader, url);
    return std::move(extraction).result();
}

}  // namespace quillet
