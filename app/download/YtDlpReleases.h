// Which yt-dlp is used: the one that came with the program, or a newer one that was fetched since. It reads sites, which
// change, so it goes stale sooner than the program.
// Threads: callable from every thread that may wait for a disk.
#pragma once

#include "platform/base/FilePath.h"

#include <string>

namespace quillet {

struct YtDlpRelease {
    /// Empty where there is none.
    FilePath application;
    /// As yt-dlp says it, "2026.10.26"; empty where nobody knows.
    std::string version;
    /// It was fetched since, and can be undone.
    bool isUpdate = false;

    bool operator==(const YtDlpRelease&) const = default;
};

class YtDlpReleases {
public:
    /// `shipped` is the folder of the program's tools, `updates` that of what was fetched since, as "<version>/yt-dlp".
    YtDlpReleases(FilePath shipped, FilePath updates);

    /// The newest; of equals the one that came with the program.
    [[nodiscard]] YtDlpRelease present() const;
    /// Goes back to the one that came with the program.
    void undoUpdates() const;

    [[nodiscard]] const FilePath& updates() const { return m_updates; }

private:
    FilePath m_shipped;
    FilePath m_updates;
};

}  // namespace quillet
