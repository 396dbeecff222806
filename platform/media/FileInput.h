// One regular file as the only source of bytes that FFmpeg gets. It opens nothing that could block or have an effect (pipes,
// devices, directories), and the file's name plays no part: a name that looks like an address is a name all the same.
// Threads: confined to one thread at a time, except `readErrors`.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/media/AudioFile.h"
#include "platform/media/FfmpegHandles.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <span>

namespace quillet {

class FileInput {
public:
    /// `notFound`, `notAFile`, `notPermitted`, `empty` (no bytes) or `unreadable` when the file cannot be used.
    [[nodiscard]] static std::expected<std::unique_ptr<FileInput>, AudioFileError> open(const FilePath& path);
    ~FileInput();
    FileInput(const FileInput&) = delete;
    FileInput& operator=(const FileInput&) = delete;

    /// For AVFormatContext::pb; owned by this object, which must outlive the format context.
    [[nodiscard]] AVIOContext* context() const { return m_context.get(); }
    /// Reads past the context, from byte `offset` on. Returns how many: fewer than asked only where the file ends, 0 there and
    /// when the disk refuses.
    [[nodiscard]] std::size_t readAt(std::int64_t offset, std::span<unsigned char> bytes);
    /// Whether the disk has refused to give bytes. The context gives none from then on, and does not ask the disk, until
    /// `tryAgain`: what is decoded in between must not be believed, and a disk that fails may take seconds to say so.
    [[nodiscard]] bool hasFailed() const { return m_failed; }
    void tryAgain();
    /// How often the disk has refused since the file was opened. Any thread.
    [[nodiscard]] std::int64_t readErrors() const { return m_readErrors.load(std::memory_order_relaxed); }

private:
    FileInput(int descriptor, std::int64_t size);
    static int readCallback(void* self, std::uint8_t* bytes, int count);
    static std::int64_t seekCallback(void* self, std::int64_t offset, int whence);
    /// A read of the disk, as pread(2): -1 when it refuses.
    [[nodiscard]] std::int64_t readDisk(std::int64_t offset, std::span<unsigned char> bytes);

    int m_descriptor;
    std::int64_t m_size;
    std::int64_t m_position = 0;
    bool m_failed = false;
    std::atomic<std::int64_t> m_readErrors = 0;
    FfmpegHandle<AVIOContext> m_context;
};

}  // namespace quillet
