#include "app/ui/DroppedFiles.h"

#include "app/core/FileAddress.h"
#include "app/core/SupportedAudio.h"

#include <QByteArray>
#include <QMimeData>

#include <algorithm>

namespace quillet {

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
