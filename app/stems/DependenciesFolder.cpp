#include "app/stems/DependenciesFolder.h"

#include "platform/files/DirectoryBytes.h"
#include "platform/files/FileExists.h"
#include "platform/files/UserDirectories.h"

#include <QCryptographicHash>
#include <QFile>
#include <QSaveFile>
#include <QStringDecoder>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace quillet {
namespace {

constexpr const char* marker = ".req-hash";
/// That the environment is ours.
constexpr const char* claimMark = ".quillet";
/// In every virtual environment.
constexpr const char* environmentMark = "pyvenv.cfg";
constexpr double gigabyte = 1 << 30;
/// What the environment takes, and what uv keeps of what it has fetched: in one file system it is the same data.
constexpr double environmentBytes = 1.2 * gigabyte;
constexpr double cacheBytes = 1.2 * gigabyte;

QString toQt(const FilePath& path) { return QFile::decodeName(QByteArray::fromStdString(path.native())); }

std::optional<QByteArray> contents(const FilePath& path)
{
    QFile file(toQt(path));
    if (path.empty() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

FilePath uvCache()
{
    if (const char* chosen = std::getenv("UV_CACHE_DIR"); chosen != nullptr && *chosen != '\0')
        return chosen;
    if (const char* caches = std::getenv("XDG_CACHE_HOME"); caches != nullptr && *caches == '/')
        return FilePath(caches) / "uv";
    return homeDirectory() / ".cache" / "uv";
}

/// The nearest folder that exists.
FilePath existing(FilePath path)
{
    std::error_code unknown;
    while (path.has_relative_path() && !std::filesystem::exists(path, unknown))
        path = path.parent_path();
    return path;
}

std::optional<StemError> shortage(const FilePath& path, double neededBytes)
{
    std::error_code unknown;
    const auto space = std::filesystem::space(existing(path), unknown);
    if (unknown || static_cast<double>(space.available) >= neededBytes)
        return std::nullopt;
    return NoSpace{ path.native(), neededBytes, static_cast<double>(space.available) };
}

bool areOnOneFileSystem(const FilePath& one, const FilePath& other)
{
    struct stat first{};
    struct stat second{};
    return ::stat(existing(one).c_str(), &first) == 0 && ::stat(existing(other).c_str(), &second) == 0
        && first.st_dev == second.st_dev;
}

bool holdsPackages(const FilePath& environment)
{
    std::error_code error;
    for (std::filesystem::directory_iterator python(environment / "lib", error), end; !error && python != end;
         python.increment(error))
        for (std::filesystem::directory_iterator entry(python->path() / "site-packages", error); !error && entry != end;
             entry.increment(error))
            if (entry->path().extension() == ".dist-info")
                return true;
    return false;
}

}  // namespace

DependenciesFolder::DependenciesFolder(FilePath path, FilePath requirements)
    : m_path(std::move(path)),
      m_requirements(std::move(requirements))
{
}

bool DependenciesFolder::needsEnvironmentSetup() const
{
    if (!fileExists(interpreter()))
        return true;
    const auto stored = storedRequirementsHash();
    return !stored || currentRequirementsHash() != stored;
}

std::optional<StemError> DependenciesFolder::obstacle() const
{
    if (!isOwn())
        return ForeignFolder{ m_path.native() };
    const FilePath cache = uvCache();
    if (areOnOneFileSystem(m_path, cache))
        return shortage(m_path, std::max(environmentBytes, cacheBytes));
    const auto shortageHere = shortage(m_path, environmentBytes);
    return shortageHere ? shortageHere : shortage(cache, cacheBytes);
}

void DependenciesFolder::begin() const
{
    std::error_code ignored;
    std::filesystem::remove(m_path / marker, ignored);
}

void DependenciesFolder::claim() const { std::ofstream(m_path / claimMark); }

void DependenciesFolder::writeRequirementsHash() const
{
    const auto hash = currentRequirementsHash();
    QSaveFile file(toQt(m_path / marker));
    if (!hash || !file.open(QIODevice::WriteOnly))
        return;
    file.write(hash->data(), static_cast<qint64>(hash->size()));
    file.commit();
}

std::int64_t DependenciesFolder::bytes() const { return isOwn() ? directoryBytes(m_path) : 0; }

void DependenciesFolder::remove() const
{
    std::error_code ignored;
    if (isOwn())
        std::filesystem::remove_all(m_path, ignored);
}

std::optional<std::string> DependenciesFolder::currentRequirementsHash() const
{
    const auto bytes = contents(m_requirements);
    if (!bytes)
        return std::nullopt;
    return QCryptographicHash::hash(*bytes, QCryptographicHash::Sha256).toHex().toStdString();
}

std::optional<std::string> DependenciesFolder::storedRequirementsHash() const
{
    const auto bytes = contents(m_path / marker);
    if (!bytes)
        return std::nullopt;
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(*bytes);
    return decoder.hasError() ? std::nullopt : std::optional(text.trimmed().toStdString());
}

bool DependenciesFolder::isOwn() const
{
    std::error_code unknown;
    const auto status = std::filesystem::status(m_path, unknown);
    if (status.type() == std::filesystem::file_type::not_found)
        return true;
    if (status.type() != std::filesystem::file_type::directory)
        return false;
    if (fileExists(m_path / claimMark) || fileExists(m_path / marker))
        return true;
    // One that was being made when the power went has nothing in it yet.
    if (fileExists(m_path / environmentMark))
        return !holdsPackages(m_path);
    return std::filesystem::is_empty(m_path, unknown) && !unknown;
}

}  // namespace quillet
