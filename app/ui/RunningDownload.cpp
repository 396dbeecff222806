#include "app/ui/RunningDownload.h"

#include <QCoreApplication>

#include <algorithm>

namespace quillet {
namespace {

constexpr std::int64_t bytesPerKB = 1024;
constexpr std::int64_t bytesPerMB = 1024 * bytesPerKB;

QString tr(const char* text) { return QCoreApplication::translate("RunningDownload", text); }

QString sizeText(std::int64_t bytes)
{
    if (bytes < bytesPerMB)
        return tr("%1 KB").arg((bytes + bytesPerKB - 1) / bytesPerKB);
    return tr("%1 MB").arg(static_cast<double>(bytes) / bytesPerMB, 0, 'f', 1);
}

}  // namespace

void RunningDownload::start(URLDownloader& downloader, const WebAddress& address, const FilePath& directory)
{
    downloader.download(address, directory,
                        { [self = shared_from_this()](const DownloadProgress& progress) {
                             self->m_progress = progress;
                             if (self->m_listener.progressed)
                                 self->m_listener.progressed();
                         },
                          [self = shared_from_this()](const URLDownloader::Outcome& outcome) {
                              // The listener may be replaced while it listens.
                              if (const auto ended = self->m_listener.ended)
                                  ended(outcome);
                          } });
}

QString RunningDownload::words() const
{
    if (!m_progress)
        return tr("Connecting…");
    if (m_progress->step == DownloadProgress::Step::converting)
        return tr("Converting…");
    if (const auto part = percent())
        return tr("%1 % of %2").arg(*part).arg(sizeText(m_progress->expectedBytes));
    return tr("%1 received").arg(sizeText(m_progress->receivedBytes));
}

std::optional<int> RunningDownload::percent() const
{
    if (!m_progress || m_progress->step != DownloadProgress::Step::receiving || m_progress->expectedBytes <= 0)
        return std::nullopt;
    const double part = static_cast<double>(m_progress->receivedBytes) / static_cast<double>(m_progress->expectedBytes);
    return static_cast<int>(100 * std::clamp(part, 0.0, 1.0));
}

}  // namespace quillet
