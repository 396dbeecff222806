#include "app/core/SongFolders.h"

#include "app/core/SupportedAudio.h"
#include "platform/files/NormalPath.h"

#include <QCollator>
#include <QString>

#include <algorithm>
#include <set>
#include <system_error>
#include <utility>

namespace quillet {
namespace {

bool isFolder(const FilePath& path)
{
    std::error_code unknown;
    return std::filesystem::is_directory(path, unknown);
}

QCollator naturalOrder()
{
    // The C locale has no order but that of the bytes.
    const QLocale locale;
    QCollator collator(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

class Search {
public:
    explicit Search(const std::stop_token& stop)
        : m_stop(stop)
    {
    }

    void add(const FilePath& named)
    {
        const FilePath path = normalPath(named);
        if (isFolder(path))
            addFolder(path, 0);
        else if (isSupportedAudio(path))
            addSong(path);
    }

    [[nodiscard]] std::vector<FilePath> takeSongs() { return std::move(m_songs); }

private:
    [[nodiscard]] bool isOver() const { return m_stop.stop_requested() || m_songs.size() >= mostListedSongs; }

    void addSong(const FilePath& song)
    {
        if (!isOver() && m_known.insert(song.native()).second)
            m_songs.push_back(song);
    }

    void addFolder(const FilePath& folder, int depth)
    {
        // By what it is in the end: links can lead back to where they are.
        std::error_code unknown;
        const FilePath real = std::filesystem::canonical(folder, unknown);
        if (unknown || isOver() || !m_visited.insert(real.native()).second)
            return;
        std::vector<FilePath> songs;
        std::vector<FilePath> folders;
        for (std::filesystem::directory_iterator entry(folder, unknown), end; !unknown && entry != end && !isOver();
             entry.increment(unknown)) {
            std::error_code gone;
            const FilePath& path = entry->path();
            if (path.filename().native().starts_with('.'))
                continue;
            if (isSupportedAudio(path) && entry->is_regular_file(gone))
                songs.push_back(path);
            else if (depth < deepestSongFolder && entry->is_directory(gone))
                folders.push_back(path);
        }
        for (const FilePath& song : sorted(std::move(songs)))
            addSong(song);
        for (const FilePath& inner : sorted(std::move(folders)))
            addFolder(inner, depth + 1);
    }

    [[nodiscard]] std::vector<FilePath> sorted(std::vector<FilePath> paths) const
    {
        std::vector<std::pair<QCollatorSortKey, FilePath>> keyed;
        for (FilePath& path : paths)
            keyed.emplace_back(m_order.sortKey(QString::fromStdString(displayText(path.filename()))), std::move(path));
        std::ranges::sort(keyed, [](const auto& a, const auto& b) {
            const int order = a.first.compare(b.first);
            return order != 0 ? order < 0 : a.second.native() < b.second.native();
        });
        std::ranges::transform(keyed, paths.begin(), [](auto& pair) { return std::move(pair.second); });
        return paths;
    }

    std::stop_token m_stop;
    QCollator m_order = naturalOrder();
    std::vector<FilePath> m_songs;
    std::set<std::string> m_known;
    std::set<std::string> m_visited;
};

}  // namespace

std::vector<FilePath> songsIn(const std::vector<FilePath>& paths, const std::stop_token& stop)
{
    Search search(stop);
    for (const FilePath& path : paths)
        search.add(path);
    return search.takeSongs();
}

}  // namespace quillet
