#include "app/playback/StemFiles.h"

#include <utility>

namespace quillet {

std::vector<StemFile> openStemFiles(AudioFileOpener& opener, std::span<const StemSession::Stem> stems)
{
    std::vector<StemFile> files;
    for (const StemSession::Stem& stem : stems)
        if (auto file = opener.open(stem.fileURL))
            files.push_back({ stem, std::move(*file) });
    return files;
}

}  // namespace quillet
