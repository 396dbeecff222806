#include "app/ui/DroppedFiles.h"

#include "app/core/SupportedAudio.h"

#include <QByteArray>
#include <QMimeData>
#include <QSysInfo>

#include <algorithm>

namespace quillet {
namespace {

/// The path in "file://HOST/PATH" or "file:/PATH", its percent signs read byte by byte; nothing for another address.
std::optional<FilePath> localFile(QByteArray address)
{
    constexpr QByteArrayView scheme("file:");
    if (!address.startsWith(scheme))
        return std::nullopt;
    address.remove(0, scheme.size());
    if (address.startsWith("//")) {
        const QByteArray host = address.mid(2, std::max<qsizetype>(address.indexOf('/', 2) - 2, 0));
        if (!host.isEmpty() && host != "localhost" && host != QSysInfo::machineHostName().toUtf8())
            return std::nullopt;
        address.remove(0, 2 + host.size());
    }
    return address.startsWith('/') ? std::optional<FilePath>(QByteArray::fromPercentEncoding(address).toStdString())
                                   : std::nullopt;
}

}  // namespace

std::vector<FilePath> droppedFiles(const QMimeData& data)
{
    // As bytes: the toolkit's addresses lose what is not UTF-8.
    std::vector<FilePath> files;
    for (const QByteArray& line : data.data(QStringLiteral("text/uri-list")).split('\n'))
        if (auto file = localFile(line.trimmed()))
            files.push_back(std::move(*file));
    return files;
}

std::optional<FilePath> firstAudioFile(const QMimeData& data)
{
    const auto files = droppedFiles(data);
    const auto found = std::ranges::find_if(files, isSupportedAudio);
    return found == files.end() ? std::nullopt : std::optional(*found);
}

}  // namespace quillet
