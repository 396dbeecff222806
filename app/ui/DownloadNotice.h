// A download whose sheet has been closed: how far it is, then its song to open or why there is none. It never opens anything by
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
    DownloadNotice(const ThemeSource& source, std::unique_ptr<RunningDownload> download,
                   std::function<void(const FilePath& file)> open, QWidget* parent = nullptr);

private:
    void showProgress();
    void showEnd(const URLDownloader::Outcome& outcome);
    void stop();
    /// The last answer that is asked for: to throw away what has been received, or only to close.
    void offerDiscard();
    void offerClose();

    std::unique_ptr<RunningDownload> m_download;
    std::function<void(const FilePath& file)> m_open;
    QPushButton& m_stop;
};

}  // namespace quillet
