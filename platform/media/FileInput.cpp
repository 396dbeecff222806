#include "platform/media/FileInput.h"

#include "platform/base/Require.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace quillet {
namespace {

constexpr int ioBufferBytes = 32 * 1024;

AudioFileError errorOf(int code)
{
    switch (code) {
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
        return AudioFileError::notFound;
    case EACCES:
    case EPERM:
        return AudioFileError::notPermitted;
    case EISDIR:
    case ENXIO:
    case ENODEV:
        return AudioFileError::notAFile;
    default:
        return AudioFileError::unreadable;
    }
}

}  // namespace

std::expected<std::unique_ptr<FileInput>, AudioFileError> FileInput::open(const FilePath& path)
{
    struct stat status{};
    // Looked at before it is opened (opening a device may do something), and again afterwards (it may have been replaced).
    if (::stat(path.c_str(), &status) != 0)
        return std::unexpected(errorOf(errno));
    if (!S_ISREG(status.st_mode))
        return std::unexpected(AudioFileError::notAFile);
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return std::unexpected(errorOf(errno));
    const bool looked = ::fstat(descriptor, &status) == 0;
    if (!looked || !S_ISREG(status.st_mode) || status.st_size == 0) {
        ::close(descriptor);
        if (!looked)
            return std::unexpected(AudioFileError::unreadable);
        return std::unexpected(S_ISREG(status.st_mode) ? AudioFileError::empty : AudioFileError::notAFile);
    }
    return std::unique_ptr<FileInput>(new FileInput(descriptor, status.st_size));
}

FileInput::FileInput(int descriptor, std::int64_t size)
    : m_descriptor(descriptor),
      m_size(size)
{
    auto* buffer = static_cast<unsigned char*>(av_malloc(ioBufferBytes));
    REQUIRE(buffer != nullptr);
    m_context.reset(
        avio_alloc_context(buffer, ioBufferBytes, 0, this, &FileInput::readCallback, nullptr, &FileInput::seekCallback));
    REQUIRE(m_context != nullptr);
}

FileInput::~FileInput() { ::close(m_descriptor); }

void FileInput::tryAgain()
{
    m_failed = false;
    m_context->error = 0;
    m_context->eof_reached = 0;
}

std::int64_t FileInput::readDisk(std::int64_t offset, std::span<unsigned char> bytes)
{
    for (;;) {
        const ssize_t got = ::pread(m_descriptor, bytes.data(), bytes.size(), offset);
        if (got >= 0)
            return got;
        if (errno == EINTR)
            continue;
        m_failed = true;
        m_readErrors.fetch_add(1, std::memory_order_relaxed);
        return -1;
    }
}

std::size_t FileInput::readAt(std::int64_t offset, std::span<unsigned char> bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const std::int64_t got = readDisk(offset + static_cast<std::int64_t>(done), bytes.subspan(done));
        if (got <= 0)
            break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

int FileInput::readCallback(void* self, std::uint8_t* bytes, int count)
{
    auto& input = *static_cast<FileInput*>(self);
    if (input.m_failed)
        return AVERROR(EIO);
    const std::int64_t got = input.readDisk(input.m_position, std::span(bytes, static_cast<std::size_t>(count)));
    if (got < 0)
        return AVERROR(EIO);
    if (got == 0)
        return AVERROR_EOF;
    input.m_position += got;
    return static_cast<int>(got);
}

std::int64_t FileInput::seekCallback(void* self, std::int64_t offset, int whence)
{
    auto& input = *static_cast<FileInput*>(self);
    std::int64_t base = 0;
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return input.m_size;
    case SEEK_SET:
        break;
    case SEEK_CUR:
        base = input.m_position;
        break;
    case SEEK_END:
        base = input.m_size;
        break;
    default:
        return AVERROR(EINVAL);
    }
    if (offset < -base || offset > INT64_MAX - base)
        return AVERROR(EINVAL);
    input.m_position = base + offset;
    return input.m_position;
}

}  // namespace quillet
