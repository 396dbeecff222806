// A download from its start to its end, and who shows it: first the sheet that it was started from, then, if that is closed, a
// notice. Destroying it stops it.
// Threads: main thread.
#pragma once

#include "app/download/URLDownloader.h"

#include <QString>

#include <expected>
#include <functional>
#include <memory>
#include <optional>

namespace quillet {

class RunningDownload {
public:
    struct Listener {
        std::function<void()> progressed;
        /// Not called for one that is stopped. It may destroy the download.
        std::function<void(URLDownloader::Outcome outcome)> ended;
    };

    /// Fails if a tool is missing. The listener hears of nothing before this returns. `downloader` outlives the download.
    [[nodiscard]] static std::expected<std::unique_ptr<RunningDownload>, DownloadError>
    start(URLDownloader& downloader, const WebAddress& address, const FilePath& directory, Listener listener);
    ~RunningDownload() = default;
    RunningDownload(const RunningDownload&) = delete;
    RunningDownload& operator=(const RunningDownload&) = delete;

    /// In place of the one before; one without functions hears nothing.
    void setListener(Listener listener) { m_listener = std::move(listener); }

    /// What has been received stays for another attempt, unless it is discarded.
    void stop() { m_process.reset(); }
    /// Throws away what has been received of a download that failed or was stopped.
    void discard() { m_downloader.discard(m_address, m_directory); }

    /// What goes on, in words.
    [[nodiscard]] QString words() const;
    /// Whole percent, 0 to 100, while it is known.
    [[nodiscard]] std::optional<int> percent() const;

private:
    RunningDownload(URLDownloader& downloader, WebAddress address, FilePath directory, Listener listener);

    URLDownloader& m_downloader;
    WebAddress m_address;
    FilePath m_directory;
    Listener m_listener;
    /// Nothing before the first that is told.
    std::optional<DownloadProgress> m_progress;
    std::unique_ptr<RunningProcess> m_process;
};

/// The error's description in the user's language.
[[nodiscard]] QString errorText(const DownloadError& error);

}  // namespace quillet
