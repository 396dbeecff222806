// Opens silent files that exist only here: those that a test has added under a path, and no others.
// Threads: one.
#pragma once

#include "platform/media/AudioFile.h"
#include "tests/support/MemoryAudioFile.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace quillet {

class FakeAudioFileOpener final : public AudioFileOpener {
public:
    /// Every sample is `level`.
    void add(const FilePath& path, int sampleRate, std::int64_t frames, float level = 0)
    {
        m_files[path] = { sampleRate, frames, level };
    }
    void remove(const FilePath& path) { m_files.erase(path); }

    [[nodiscard]] std::expected<std::unique_ptr<AudioFile>, AudioFileError> open(const FilePath& path) override
    {
        const auto file = m_files.find(path);
        if (file == m_files.end())
            return std::unexpected(AudioFileError::notFound);
        const auto [sampleRate, frames, level] = file->second;
        return std::make_unique<MemoryAudioFile>(sampleRate, std::vector<float>(static_cast<std::size_t>(2 * frames), level));
    }

private:
    struct File {
        int sampleRate = 0;
        std::int64_t frames = 0;
        float level = 0;
    };
    std::map<FilePath, File> m_files;
};

}  // namespace quillet
