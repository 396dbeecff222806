// Keeps the list of the files opened last in the user's defaults domain. It holds nothing in memory; a stored value that is
// no list of texts counts as empty.
// Threads: callable from every thread; `all` waits for the disks that the files are on, so not on the main thread.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/defaults/DefaultsDomain.h"

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

class RecentFilesStore {
public:
    static constexpr std::string_view storeKey = "recentFiles";
    static constexpr std::size_t maxCount = 10;

    /// Over any domain, which outlives the store.
    explicit RecentFilesStore(DefaultsDomain& defaults)
        : m_defaults(defaults)
    {
    }

    /// The composition root's store over the standard domain.
    static RecentFilesStore& shared();

    /// What is listed, whether it exists or not, the most recent first. Waits for no disk but the store's.
    [[nodiscard]] std::vector<FilePath> listed() const;

    /// The listed files and folders that exist now, the most recent first. Any other is dropped from the stored list too.
    [[nodiscard]] std::vector<FilePath> all();

    /// Puts the file at the head of the list, once (paths are compared byte by byte), and cuts the list to `maxCount`.
    void push(const FilePath& url);

    void clear();

private:
    [[nodiscard]] std::vector<std::string> storedPaths() const;

    DefaultsDomain& m_defaults;
    /// Held while the stored list is changed, never while a disk is waited for.
    std::mutex m_mutex;
};

}  // namespace quillet
