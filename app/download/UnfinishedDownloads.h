// What downloads that did not end have left in a folder: hidden folders, one for each address, from which the same address goes
// on the next time. app/download/yt-dlp/__main__.py makes and names them, and holds a lock (flock) on one while it uses it;
// nothing here touches one that is in use, or anything else in the folder.
// Threads: any; it waits for the disk, so not from the main thread.
#pragma once

#include "app/download/WebAddress.h"
#include "platform/base/FilePath.h"

#include <chrono>
#include <utility>

namespace quillet {

class UnfinishedDownloads {
public:
    /// How long what has been received is kept for another attempt.
    static constexpr std::chrono::days keptFor{ 7 };

    explicit UnfinishedDownloads(FilePath folder)
        : m_folder(std::move(folder))
    {
    }

    /// Removes what there is of that address. If it has only just been stopped, waits up to a second until that is over.
    void discard(const WebAddress& address) const;

    /// Removes what is the user's and has not been touched for `keptFor`.
    void sweep(std::chrono::system_clock::time_point now) const;

private:
    FilePath m_folder;
};

}  // namespace quillet
