// Fetches the audio of a web address into a local file. It transfers nothing itself: it runs yt-dlp, which lies beside the
// executable with uv and ffmpeg. It keeps nothing of a download: no queue, no history; several may run at once. What has been
// received of one that fails or is stopped stays in a hidden folder, from which the same address goes on the next time.
// Threads: main thread; handlers run there.
#pragma once

#include "app/download/DownloadError.h"
#include "app/download/WebAddress.h"
#include "platform/base/FilePath.h"
#include "platform/process/ProcessRunner.h"
#include "platform/schedule/BackgroundRunner.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>

namespace quillet {

/// How far a download is, as often as the downloader tells.
struct DownloadProgress {
    enum class Step {
        receiving,
        /// All of it is there and is being made into the audio file.
        converting,
    };

    Step step = Step::receiving;
    /// While receiving; `expectedBytes` is 0 where nobody knows.
    std::int64_t receivedBytes = 0;
    std::int64_t expectedBytes = 0;

    bool operator==(const DownloadProgress&) const = default;
};

class URLDownloader {
public:
    using Outcome = std::expected<FilePath, DownloadError>;
    struct Handlers {
        std::function<void(const DownloadProgress& progress)> progress;
        /// Called once, later than `download` returns, unless the download is stopped.
        std::function<void(Outcome outcome)> ended;
    };

    /// `executableDirectory` is empty where nobody knows it. The runners outlive the downloader.
    /// `updatesDirectory` holds newer releases of yt-dlp, if any.
    URLDownloader(ProcessRunner& processes, BackgroundRunner& background, FilePath executableDirectory,
                  FilePath updatesDirectory = {});

    /// The composition root's downloader.
    static URLDownloader& shared();

    /// Fetches into `directory`, an absolute path whose name is UTF-8; it is created if it is missing. Destroying what is
    /// returned stops the download. Fails if a tool is missing.
    [[nodiscard]] std::expected<std::unique_ptr<RunningProcess>, DownloadError>
    download(const WebAddress& address, const FilePath& directory, Handlers handlers);

    /// Removes, in the background, what has been received of a download that failed or was stopped.
    void discard(const WebAddress& address, const FilePath& directory);

    /// Where the tools lie: the executable's directory, or `uvNotFound` where that is unknown.
    [[nodiscard]] std::expected<FilePath, DownloadError> bundleHelperDirectory() const;

private:
    struct Tools {
        FilePath uv;
        FilePath ytDlp;
        FilePath ffmpeg;
    };

    [[nodiscard]] std::expected<Tools, DownloadError> findTools() const;

    ProcessRunner& m_processes;
    BackgroundRunner& m_background;
    FilePath m_executableDirectory;
    FilePath m_updatesDirectory;
};

}  // namespace quillet
