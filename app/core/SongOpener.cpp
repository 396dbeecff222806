#include "app/core/SongOpener.h"

#include "app/core/SongFolders.h"
#include "app/core/SupportedAudio.h"
#include "platform/base/Require.h"

#include <system_error>
#include <utility>

namespace quillet {
namespace {

constexpr double secondsUnshown = 0.5;

}  // namespace

SongOpener::SongOpener(const Services& services, Window window)
    : m_services(services),
      m_window(std::move(window)),
      m_self(std::make_shared<SongOpener*>(this))
{
    const auto on = [this](CommandId id, auto&& action) {
        m_subscriptions.push_back(m_services.commands.onCommand(id, action));
    };
    on(CommandId::previousSong, [this](const auto&) { openListed(m_services.songs.previous()); });
    on(CommandId::nextSong, [this](const auto&) { openListed(m_services.songs.next()); });
    on(CommandId::openSong, [this](const std::optional<FilePath>& song) { openListed(song ? &*song : nullptr); });
}

SongOpener::~SongOpener() { cancel(); }

void SongOpener::cancel()
{
    ++m_generation;
    m_search.request_stop();
    setSearching(false);
}

void SongOpener::setSearching(bool isSearching)
{
    m_showSearch.cancel();
    if (m_isSearching == isSearching)
        return;
    m_isSearching = isSearching;
    m_window.setSearching(isSearching);
}

void SongOpener::open(const std::vector<FilePath>& paths)
{
    REQUIRE(!paths.empty());
    cancel();
    if (paths.size() == 1 && isSupportedAudio(paths.front())) {
        // Without a look at the disk.
        m_window.open(paths.front());
        return;
    }
    m_showSearch = m_services.scheduler.after(secondsUnshown, [this] { setSearching(true); });
    search(paths);
}

void SongOpener::search(const std::vector<FilePath>& paths)
{
    m_search = std::stop_source();
    m_services.background.run([paths, stop = m_search.get_token(), generation = m_generation, self = std::weak_ptr(m_self),
                               &scheduler = m_services.scheduler] {
        auto songs = songsIn(paths, stop);
        std::error_code unknown;
        const bool isFolder = std::filesystem::is_directory(paths.front(), unknown);
        // A file whose name says nothing may be one all the same.
        if (songs.empty() && !isFolder)
            songs.push_back(paths.front());
        scheduler.post([named = paths.front(), isFolder, songs = std::move(songs), generation, self] {
            const auto opener = self.lock();
            if (opener && (*opener)->m_generation == generation)
                (*opener)->take(named, isFolder, songs);
        });
    });
}

void SongOpener::take(const FilePath& named, bool isFolder, std::vector<FilePath> songs)
{
    setSearching(false);
    if (songs.empty()) {
        m_window.refuse(named, isFolder);
        return;
    }
    const FilePath first = songs.front();
    if (songs.size() > 1)
        m_services.songs.setSongs(std::move(songs));
    m_window.open(first);
}

void SongOpener::openListed(const FilePath* song)
{
    // A copy: the list may change meanwhile.
    if (song != nullptr)
        m_window.open(FilePath(*song));
}

}  // namespace quillet
