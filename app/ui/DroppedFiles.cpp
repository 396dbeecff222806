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

bool mayHoldSongs(const std::vector<FilePath>& files) { return !std::ranges::all_of(files, isNoAudio); }

}  // namespace quillet
