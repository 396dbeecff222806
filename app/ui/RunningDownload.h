// A download from its start to its end, and who shows it: first the sheet that it was started from, then, if that is closed, a
// notice. It goes on whether or not anybody listens.
// Threads: main thread.
#pragma once

#include "app/download/URLDownloader.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace quillet {

class RunningDownload : public std::enable_shared_from_this<RunningDownload> {
public:
    struct Listener {
        std::function<void()> progressed;
        std::function<void(URLDownloader::Outcome outcome)> ended;
    };

    /// Once. The listener hears of the end before this returns if a tool is missing. The object lives at least as long as the
    /// download runs.
    void start(URLDownloader& downloader, const WebAddress& address, const FilePath& directory);

    /// In place of the one before; one without functions hears nothing.
    void setListener(Listener listener) { m_listener = std::move(listener); }

    /// What goes on, in words.
    [[nodiscard]] QString words() const;
    /// Whole percent, 0 to 100, while it is known.
    [[nodiscard]] std::optional<int> percent() const;

private:
    Listener m_listener;
    /// Nothing before the first that is told.
    std::optional<DownloadProgress> m_progress;
};

}  // namespace quillet
