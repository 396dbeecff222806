#include "app/stems/StemFolder.h"

#include "AppCore/StemSession.h"
#include "platform/files/FileExists.h"

#include <QCryptographicHash>

#include <array>
#include <fstream>
#include <iomanip>
#include <limits>
#include <system_error>
#include <utility>

namespace quillet {
namespace {

constexpr qsizetype hashBytes = 6;
constexpr const char* modelFolder = "htdemucs_6s";
/// The song's size in bytes and its time, as FileAttributes has them.
constexpr const char* songRecord = ".song";
/// What an unfinished separation, and the one that keeps others out, leave there.
constexpr std::array ownNames{ modelFolder, songRecord, ".unfinished", ".replaced", ".lock" };

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

void StemFolder::remove() const
{
    std::error_code ignored;
    for (const char* name : ownNames)
        std::filesystem::remove_all(m_path / name, ignored);
    // Only if it is empty now.
    std::filesystem::remove(m_path, ignored);
}

}  // namespace quillet
