#include "app/ui/RunningDownload.h"
#include "app/ui/controls/DecimalText.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace quillet {
namespace {

constexpr std::int64_t bytesPerKB = 1024;
constexpr std::int64_t bytesPerMB = 1024 * bytesPerKB;

struct Text {
    Q_DECLARE_TR_FUNCTIONS(RunningDownload)
};

QString sizeText(std::int64_t bytes)
{
    if (bytes < bytesPerMB)
        return Text::tr("%1 KB").arg((bytes + bytesPerKB - 1) / bytesPerKB);
    return Text::tr("%1 MB").arg(decimalText(static_cast<double>(bytes) / bytesPerMB));
}

struct ErrorText {
    Q_DECLARE_TR_FUNCTIONS(DownloadError)
};

}  // namespace

RunningDownload::RunningDownload(URLDownloader& downloader, WebAddress address, FilePath directory, Listener listener)
    : m_downloader(downloader),
      m_address(std::move(address)),
      m_directory(std::move(directory)),
      m_listener(std::move(listener))
{
}

std::expected<std::unique_ptr<RunningDownload>, DownloadError>
RunningDownload::start(URLDownloader& downloader, const WebAddress& address, const FilePath& directory, Listener listener)
{
    std::unique_ptr<RunningDownload> started(new RunningDownload(downloader, address, directory, std::move(listener)));
    auto process = downloader.download(address, directory,
                                       { [self = started.get()](const DownloadProgress& progress) {
                                            self->m_progress = progress;
                                            // A listener may be replaced, or destroy the download, while it listens.
                                            if (const auto progressed = self->m_listener.progressed)
                                                progressed();
                                        },
                                         [self = started.get()](const URLDownloader::Outcome& outcome) {
                                             if (const auto ended = self->m_listener.ended)
                                                 ended(outcome);
                                         } });
    if (!process)
        return std::unexpected(process.error());
    started->m_process = std::move(*process);
    return started;
}

QString RunningDownload::words() const
{
    if (!m_progress)
        return Text::tr("Connecting…");
    if (m_progress->step == DownloadProgress::Step::converting)
        return Text::tr("Converting…");
    if (const auto part = percent())
        return Text::tr("%1 % of %2").arg(*part).arg(sizeText(m_progress->expectedBytes));
    return Text::tr("%1 received").arg(sizeText(m_progress->receivedBytes));
}

std::optional<int> RunningDownload::percent() const
{
    if (!m_progress || m_progress->step != DownloadProgress::Step::receiving || m_progress->expectedBytes <= 0)
        return std::nullopt;
    const double part = static_cast<double>(m_progress->receivedBytes) / static_cast<double>(m_progress->expectedBytes);
    return static_cast<int>(100 * std::clamp(part, 0.0, 1.0));
}

QString errorText(const DownloadError& error)
{
    QString message = QString::fromStdString(error.message);
    switch (error.kind) {
    case DownloadError::Kind::processFailed:
        return message.isEmpty() ? ErrorText::tr("Download failed (exit code %1).").arg(error.exitCode)
                                 : ErrorText::tr("Download failed: %1").arg(message);
    case DownloadError::Kind::uvNotFound:
        return ErrorText::tr("uv not found inside the app bundle.");
    case DownloadError::Kind::ytDlpNotFound:
        return ErrorText::tr("yt-dlp not found inside the app bundle.");
    case DownloadError::Kind::ffmpegNotFound:
        return ErrorText::tr("ffmpeg not found inside the app bundle.");
    case DownloadError::Kind::noOutputFile:
        return ErrorText::tr("Download succeeded but no output file path was reported.");
    case DownloadError::Kind::launchFailed:
        break;
    }
    return message;
}

}  // namespace quillet
