// Opens what the user names in one go: one song as ever; several, or a folder, as the list of songs, and its first. It also
// carries out the commands that go through the list. What folders hold is found out beside the main thread.
// Threads: main thread.
#pragma once

#include "app/core/CommandCenter.h"
#include "app/core/SongList.h"
#include "platform/schedule/BackgroundRunner.h"
#include "platform/schedule/Scheduler.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

namespace quillet {

class SongOpener {
public:
    /// All outlive the opener, and the background's jobs that it has started.
    struct Services {
        SongList& songs;
        CommandCenter& commands;
        BackgroundRunner& background;
        Scheduler& scheduler;
    };
    /// What the window does.
    struct Window {
        /// Opens a song in place of the present one, with the defaults.
        std::function<void(const FilePath& song)> open;
        /// Says that the file, or what is in the folder, is no song.
        std::function<void(const FilePath& path, bool isFolder)> refuse;
        /// Shows that songs are still being looked for, and no longer.
        std::function<void(bool isSearching)> setSearching;
    };

    SongOpener(const Services& services, Window window);
    ~SongOpener();
    SongOpener(const SongOpener&) = delete;
    SongOpener& operator=(const SongOpener&) = delete;

    /// Files or folders, at least one. A single song that is known by its name is opened at once; everything else a moment
    /// later, unless something else is opened meanwhile. A list that there was stays where only one song is found.
    void open(const std::vector<FilePath>& paths);

    /// What is still being looked for is not wanted any more.
    void cancel();

private:
    void search(const std::vector<FilePath>& paths);
    void take(const FilePath& named, bool isFolder, std::vector<FilePath> songs);
    void setSearching(bool isSearching);
    void openListed(const FilePath* song);

    Services m_services;
    Window m_window;
    std::vector<Notifications::Subscription> m_subscriptions;
    /// Of the last search.
    std::stop_source m_search;
    /// A search that is over at once is not shown.
    ScheduledTask m_showSearch;
    bool m_isSearching = false;
    std::int64_t m_generation = 0;
    /// Expires with the opener.
    std::shared_ptr<SongOpener*> m_self;
};

}  // namespace quillet
