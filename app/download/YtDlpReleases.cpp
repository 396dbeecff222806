#include "app/download/YtDlpReleases.h"

#include "platform/files/FileExists.h"

#include <QFile>
#include <QJsonDocument>
#include <QVersionNumber>

#include <system_error>
#include <utility>

namespace quillet {
namespace {

constexpr const char* name = "yt-dlp";
/// What tools/fetch-tools has put beside the program.
constexpr const char* record = "fetched-tools.json";

QVersionNumber numbers(const std::string& version) { return QVersionNumber::fromString(QString::fromStdString(version)); }

std::string recordedVersion(const FilePath& folder)
{
    QFile file(QFile::decodeName(QByteArray::fromStdString((folder / record).native())));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll())[QLatin1String(name)].toString().toStdString();
}

}  // namespace

YtDlpReleases::YtDlpReleases(FilePath shipped, FilePath updates)
    : m_shipped(std::move(shipped)),
      m_updates(std::move(updates))
{
}

YtDlpRelease YtDlpReleases::present() const
{
    YtDlpRelease newest;
    if (fileExists(m_shipped / name))
        newest = { m_shipped / name, recordedVersion(m_shipped), false };
    std::error_code error;
    for (std::filesystem::directory_iterator entry(m_updates, error), end; !error && entry != end; entry.increment(error)) {
        const std::string version = entry->path().filename().native();
        if (numbers(version) > numbers(newest.version) && fileExists(entry->path() / name))
            newest = { entry->path() / name, version, true };
    }
    return newest;
}

void YtDlpReleases::undoUpdates() const
{
    std::error_code ignored;
    std::filesystem::remove_all(m_updates, ignored);
}

}  // namespace quillet
