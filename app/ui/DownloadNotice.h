// A download whose sheet has been closed: how far it is, then its song to open or why it failed. It never opens anything by
// itself, as the user may be playing.
// Threads: main thread.
#pragma once

#include "app/ui/Notice.h"
#include "app/ui/RunningDownload.h"

#include <functional>
#include <memory>

namespace quillet {

class DownloadNotice final : public Notice {
    Q_OBJECT

public:
    /// `open` is called when the user wants the song. The notice destroys itself when it has been answered.
    DownloadNotice(const ThemeSource& source, std::shared_ptr<RunningDownload> download,
                   std::function<void(const FilePath& file)> open, QWidget* parent = nullptr);
    ~DownloadNotice() override;
    DownloadNotice(const DownloadNotice&) = delete;
    DownloadNotice& operator=(const DownloadNotice&) = delete;

private:
    void showProgress();
    void showEnd(const URLDownloader::Outcome& outcome);

    std::shared_ptr<RunningDownload> m_download;
    std::function<void(const FilePath& file)> m_open;
};

}  // namespace quillet
