#include "app/stems/StemFolder.h"

#include "AppCore/StemSession.h"
#include "platform/files/DirectoryBytes.h"
#include "platform/files/FileExists.h"

#include <QCryptographicHash>

#include <fstream>
#include <iomanip>
#include <limits>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace quillet {
namespace {

constexpr qsizetype hashBytes = 6;
constexpr const char* modelFolder = "htdemucs_6s";
/// The song's size in bytes and its time, as FileAttributes has them.
constexpr const char* songRecord = ".song";
/// Begins the name of the folder in which a separation keeps what is unfinished (backend/stems/output.py).
constexpr std::string_view unfinishedPrefix = ".separating-";

bool isOwn(const FilePath& name)
{
    return name == modelFolder || name == songRecord || name.native().starts_with(unfinishedPrefix);
}

bool isHash(std::string_view name)
{
    return name.size() == 2 * hashBytes && name.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

std::vector<FilePath> entriesOf(const FilePath& folder)
{
    std::vector<FilePath> entries;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        entries.push_back(entry->path());
    return entries;
}

/// The stems of each song's name, and the folders that are empty then: others may have put something beside them.
void removeStems(const FilePath& model)
{
    std::error_code ignored;
    for (const FilePath& song : entriesOf(model)) {
        for (const std::string_view key : StemSession::keys)
            std::filesystem::remove(song / (std::string(key) + ".wav"), ignored);
        if (std::filesystem::is_directory(song, ignored))
            std::filesystem::remove(song, ignored);
    }
    std::filesystem::remove(model, ignored);
}

}  // namespace

std::string StemFolder::pathHash(const FilePath& song)
{
    const std::string& path = song.native();
    const QByteArray digest = QCryptographicHash::hash(QByteArray::fromStdString(path), QCryptographicHash::Sha256);
    return digest.first(hashBytes).toHex().toStdString();
}

StemFolder::StemFolder(const FilePath& stemsDirectory, FilePath song)
    : m_song(std::move(song)),
      m_path(stemsDirectory / pathHash(m_song))
{
}

StemFolder StemFolder::containing(const FilePath& stem, FilePath song)
{
    StemFolder folder;
    folder.m_song = std::move(song);
    folder.m_path = stem.parent_path().parent_path().parent_path();
    return folder;
}

std::optional<StemFolder::Stems> StemFolder::detectCachedStems() const
{
    const FilePath directory = m_path / modelFolder / m_song.stem();
    Stems stems;
    for (const std::string_view key : StemSession::keys) {
        FilePath file = directory / (std::string(key) + ".wav");
        if (!fileExists(file))
            return std::nullopt;
        stems.emplace(key, std::move(file));
    }
    return stems;
}

bool StemFolder::isOutdated(const FileAttributesReader& attributes) const
{
    FileAttributes recorded;
    std::ifstream record(m_path / songRecord);
    if (!(record >> recorded.sizeBytes >> recorded.modificationDate))
        return false;
    const auto present = attributes.attributes(m_song);
    return present && (present->sizeBytes != recorded.sizeBytes || present->modificationDate != recorded.modificationDate);
}

void StemFolder::recordSong(const FileAttributes& song) const
{
    std::ofstream record(m_path / songRecord);
    record << song.sizeBytes << ' ' << std::setprecision(std::numeric_limits<double>::max_digits10) << song.modificationDate
           << '\n';
}

std::vector<FilePath> StemFolder::ownEntries() const
{
    std::vector<FilePath> own;
    for (const FilePath& entry : entriesOf(m_path))
        if (isOwn(entry.filename()))
            own.push_back(entry);
    return own;
}

std::vector<StemFolder> StemFolder::all(const FilePath& stemsDirectory)
{
    std::vector<StemFolder> folders;
    for (const FilePath& entry : entriesOf(stemsDirectory)) {
        StemFolder folder;
        folder.m_path = entry;
        if (isHash(entry.filename().native()) && !folder.ownEntries().empty())
            folders.push_back(std::move(folder));
    }
    return folders;
}

std::int64_t StemFolder::bytes() const
{
    std::int64_t bytes = 0;
    for (const FilePath& entry : ownEntries())
        bytes += directoryBytes(entry);
    return bytes;
}

void StemFolder::remove() const
{
    std::error_code ignored;
    for (const FilePath& entry : ownEntries()) {
        if (entry.filename() == modelFolder)
            removeStems(entry);
        else
            std::filesystem::remove_all(entry, ignored);
    }
    // Only if it is empty now.
    std::filesystem::remove(m_path, ignored);
}

}  // namespace quillet
