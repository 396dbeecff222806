#include "app/export/OutputFile.h"

#include "platform/base/Require.h"

#include <cerrno>
#include <random>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillet {
namespace {

constexpr mode_t permissionBits = 0777;

std::string reason(int number)
{
    switch (number) {
    case ENOSPC:
    case EDQUOT:
        return "the disk is full";
    case EFBIG:
        return "the disk does not take files of that size";
    case EACCES:
    case EPERM:
        return "writing there is not permitted";
    case EROFS:
        return "the disk is read-only";
    case ENOENT:
    case ENOTDIR:
        return "its folder does not exist";
    case EISDIR:
        return "it is a folder";
    case ENODEV:
        return "it is neither a file nor a pipe";
    case ENAMETOOLONG:
        return "its name is too long";
    case ENOTSUP:
        return "this computer cannot make files of that kind";
    case EPIPE:
        return "nothing reads it any more";
    default:
        return std::generic_category().message(number);
    }
}

/// The name of the unfinished file beside `target`; a long name is cut, so that the suffix still fits what a folder takes.
FilePath temporaryName(const FilePath& target)
{
    constexpr std::size_t keptBytes = 200;
    std::random_device random;
    FilePath name = target;
    name.replace_filename(target.filename().native().substr(0, keptBytes) + ".quillet-" + std::to_string(random()) + ".part");
    return name;
}

}  // namespace

std::string describe(const WriteError& error)
{
    return "“" + displayText(error.path) + "” could not be written: " + reason(error.number) + ".";
}

FilePath freeName(const FilePath& wanted)
{
    std::error_code unknown;
    FilePath name = wanted;
    for (int number = 2; std::filesystem::exists(name, unknown); ++number)
        name.replace_filename(wanted.stem().native() + " (" + std::to_string(number) + ")" + wanted.extension().native());
    return name;
}

OutputFile::OutputFile(FilePath named)
    : m_named(std::move(named))
{
}

std::expected<std::unique_ptr<OutputFile>, WriteError> OutputFile::create(const FilePath& target)
{
    std::unique_ptr<OutputFile> file(new OutputFile(target));
    if (auto begun = file->open(); !begun)
        return std::unexpected(std::move(begun).error());
    return file;
}

OutputFile::~OutputFile() { discard(); }

std::expected<void, WriteError> OutputFile::open()
{
    struct stat status{};
    if (::stat(m_named.c_str(), &status) != 0)
        return errno == ENOENT && m_named.has_filename() ? openBeside() : failure(errno);
    if (S_ISCHR(status.st_mode) || S_ISFIFO(status.st_mode))
        return openDirectly();
    if (!S_ISREG(status.st_mode))
        return failure(S_ISDIR(status.st_mode) ? EISDIR : ENODEV);
    if (::access(m_named.c_str(), W_OK) != 0)
        return failure(errno);
    return openBeside();
}

std::expected<void, WriteError> OutputFile::openBeside()
{
    std::error_code unresolved;
    m_target = std::filesystem::canonical(m_named, unresolved);
    if (unresolved)
        m_target = m_named;
    do {
        m_temporary = temporaryName(m_target);
        m_descriptor = ::open(m_temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (m_descriptor < 0 && errno == EEXIST);
    if (m_descriptor < 0) {
        const int number = errno;
        m_temporary.clear();
        return failure(number);
    }
    struct stat status{};
    if (::stat(m_target.c_str(), &status) == 0 && ::fchmod(m_descriptor, status.st_mode & permissionBits) != 0)
        return failure(errno);
    return {};
}

std::expected<void, WriteError> OutputFile::openDirectly()
{
    m_descriptor = ::open(m_named.c_str(), O_WRONLY | O_CLOEXEC);
    if (m_descriptor < 0)
        return failure(errno);
    return {};
}

std::expected<void, WriteError> OutputFile::write(std::span<const std::byte> bytes)
{
    REQUIRE(m_descriptor >= 0);
    while (!bytes.empty()) {
        const ssize_t written = ::write(m_descriptor, bytes.data(), bytes.size());
        if (written >= 0)
            bytes = bytes.subspan(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            return failure(errno);
    }
    return {};
}

std::expected<void, WriteError> OutputFile::seek(std::int64_t position)
{
    REQUIRE(canSeek());
    if (::lseek(m_descriptor, position, SEEK_SET) != position)
        return failure(errno);
    return {};
}

std::expected<void, WriteError> OutputFile::finish()
{
    REQUIRE(m_descriptor >= 0);
    if (!m_temporary.empty() && ::fsync(m_descriptor) != 0)
        return failure(errno);
    // A network file system may tell only now that it has no more room.
    if (::close(std::exchange(m_descriptor, -1)) != 0 && errno != EINTR)
        return failure(errno);
    if (!m_temporary.empty()) {
        if (::rename(m_temporary.c_str(), m_target.c_str()) != 0)
            return failure(errno);
        m_temporary.clear();
    }
    return {};
}

std::unexpected<WriteError> OutputFile::failure(int number) const { return std::unexpected(WriteError{ m_named, number }); }

void OutputFile::discard()
{
    if (m_descriptor >= 0)
        ::close(std::exchange(m_descriptor, -1));
    if (!m_temporary.empty()) {
        ::unlink(m_temporary.c_str());
        m_temporary.clear();
    }
}

}  // namespace quillet
