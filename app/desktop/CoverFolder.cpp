#include "app/desktop/CoverFolder.h"

#include "platform/files/UserDirectories.h"
#include "platform/media/SongTags.h"

#include <QByteArray>
#include <QCryptographicHash>

#include <algorithm>
#include <fstream>
#include <system_error>
#include <vector>

#include <unistd.h>

namespace quillet {
namespace {

std::string nameOf(const std::string& picture)
{
    const auto bytes = QByteArray::fromRawData(picture.data(), static_cast<qsizetype>(picture.size()));
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex().toStdString();
}

bool write(const FilePath& file, const std::string& bytes)
{
    // Another instance may write the same one.
    const FilePath unfinished = file.native() + "." + std::to_string(::getpid());
    std::ofstream stream(unfinished, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    std::error_code failure;
    if (stream)
        std::filesystem::rename(unfinished, file, failure);
    if (stream && !failure)
        return true;
    std::filesystem::remove(unfinished, failure);
    return false;
}

void removeOldest(const FilePath& folder)
{
    std::error_code unknown;
    std::vector<std::pair<std::filesystem::file_time_type, FilePath>> files;
    for (auto entry = std::filesystem::directory_iterator(folder, unknown); entry != std::filesystem::directory_iterator();
         entry.increment(unknown))
        files.emplace_back(entry->last_write_time(unknown), entry->path());
    std::ranges::sort(files, std::ranges::greater());
    for (std::size_t i = keptCovers; i < files.size(); ++i)
        std::filesystem::remove(files[i].second, unknown);
}

}  // namespace

std::optional<FilePath> keepCover(const FilePath& folder, const std::string& picture)
{
    const std::string_view extension = pictureExtension(picture);
    if (extension.empty() || !createPrivateDirectory(folder))
        return std::nullopt;
    FilePath file = folder / (nameOf(picture) + std::string(extension));
    std::error_code absent;
    std::filesystem::last_write_time(file, std::filesystem::file_time_type::clock::now(), absent);
    if (!absent)
        return file;
    if (!write(file, picture))
        return std::nullopt;
    removeOldest(folder);
    return file;
}

}  // namespace quillet
