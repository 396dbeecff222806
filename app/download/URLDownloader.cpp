#include "app/download/URLDownloader.h"

#include "AppCore/SharedInstance.h"
#include "app/download/UnfinishedDownloads.h"
#include "app/download/YtDlpReleases.h"
#include "platform/files/FileExists.h"
#include "platform/process/LineSplitter.h"

#include <QString>
#include <QStringDecoder>

#include <charconv>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace quillet {
namespace {

/// Begins the lines on standard error that our entry into yt-dlp tells its progress by (app/download/yt-dlp/__main__.py).
constexpr std::string_view progressMark = "quillet-progress ";

/// Without the white space around it; empty for what is not UTF-8.
std::string trimmedText(std::string_view bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    return decoder.hasError() ? std::string() : text.trimmed().toStdString();
}

/// Of what follows the mark; nothing where it makes no sense.
std::optional<DownloadProgress> readProgress(std::string_view words)
{
    if (words == "converting")
        return DownloadProgress{ DownloadProgress::Step::converting };
    DownloadProgress progress;
    const char* end = words.data() + words.size();
    const auto received = std::from_chars(words.data(), end, progress.receivedBytes);
    if (received.ec != std::errc() || received.ptr == end)
        return std::nullopt;
    const auto expected = std::from_chars(received.ptr + 1, end, progress.expectedBytes);
    return expected.ec == std::errc() ? std::optional(progress) : std::nullopt;
}

URLDownloader::Outcome outcomeOf(const ProcessEnd& end, std::string_view errorText)
{
    if (end.status != 0)
        return std::unexpected(DownloadError{ DownloadError::Kind::processFailed, end.status, trimmedText(errorText) });
    std::string path = trimmedText(end.standardOutput);
    if (path.empty())
        return std::unexpected(DownloadError{ DownloadError::Kind::noOutputFile });
    return FilePath(std::move(path));
}

/// Takes the lines of progress out of what the child says on standard error.
class Listener {
public:
    explicit Listener(URLDownloader::Handlers handlers)
        : m_handlers(std::move(handlers))
    {
    }

    void hear(std::string_view bytes) { m_lines.add(bytes); }

    void finish(const std::expected<ProcessEnd, ProcessStartError>& end)
    {
        m_lines.finish();
        if (m_isClosed)
            return;
        if (end)
            m_handlers.ended(outcomeOf(*end, m_errorText));
        else
            m_handlers.ended(std::unexpected(DownloadError{ DownloadError::Kind::launchFailed, 0, end.error().description }));
    }

    /// Calls no handler any more: a handler of one line may end what other lines have been heard of already.
    void close() { m_isClosed = true; }

private:
    void takeLine(std::string_view line)
    {
        if (!line.starts_with(progressMark)) {
            m_errorText += line;
            return;
        }
        line.remove_prefix(progressMark.size());
        if (line.ends_with('\n'))
            line.remove_suffix(1);
        if (const auto progress = readProgress(line); progress && m_handlers.progress && !m_isClosed)
            m_handlers.progress(*progress);
    }

    URLDownloader::Handlers m_handlers;
    LineSplitter m_lines{ [this](std::string_view line) { takeLine(line); } };
    std::string m_errorText;
    bool m_isClosed = false;
};

class RunningTool final : public RunningProcess {
public:
    RunningTool(std::shared_ptr<Listener> listener, std::unique_ptr<RunningProcess> process)
        : m_listener(std::move(listener)),
          m_process(std::move(process))
    {
    }
    ~RunningTool() override { m_listener->close(); }
    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;

    void terminate() override { m_process->terminate(); }

private:
    std::shared_ptr<Listener> m_listener;
    std::unique_ptr<RunningProcess> m_process;
};

}  // namespace

URLDownloader::URLDownloader(ProcessRunner& processes, BackgroundRunner& background, FilePath executableDirectory,
                             FilePath updatesDirectory)
    : m_processes(processes),
      m_background(background),
      m_executableDirectory(std::move(executableDirectory)),
      m_updatesDirectory(std::move(updatesDirectory))
{
}

URLDownloader& URLDownloader::shared() { return SharedInstance<URLDownloader>::get(); }

std::expected<FilePath, DownloadError> URLDownloader::bundleHelperDirectory() const
{
    if (m_executableDirectory.empty())
        return std::unexpected(DownloadError{ DownloadError::Kind::uvNotFound });
    return m_executableDirectory;
}

std::expected<URLDownloader::Tools, DownloadError> URLDownloader::findTools() const
{
    const auto directory = bundleHelperDirectory();
    if (!directory)
        return std::unexpected(directory.error());
    Tools tools{ *directory / "uv", YtDlpReleases(*directory, m_updatesDirectory).present().application,
                 *directory / "ffmpeg" };
    if (!isExecutableFile(tools.uv))
        return std::unexpected(DownloadError{ DownloadError::Kind::uvNotFound });
    // uv reads it: it need not be executable.
    if (tools.ytDlp.empty())
        return std::unexpected(DownloadError{ DownloadError::Kind::ytDlpNotFound });
    if (!isExecutableFile(tools.ffmpeg))
        return std::unexpected(DownloadError{ DownloadError::Kind::ffmpegNotFound });
    return tools;
}

std::expected<std::unique_ptr<RunningProcess>, DownloadError>
URLDownloader::download(const WebAddress& address, const FilePath& directory, Handlers handlers)
{
    const auto tools = findTools();
    if (!tools)
        return std::unexpected(tools.error());
    const ProcessRequest request{
        tools->uv,
        { "run", "--python", "3.12", tools->ytDlp.native(), "-x", "--no-playlist", "--audio-format", "m4a", "--ffmpeg-location",
          tools->ffmpeg.native(), "--print", "after_move:filepath", "-o", directory.native() + "/%(title)s.%(ext)s",
          address.absoluteText() },
        // Not where the program was started: uv would take a Python project there for ours.
        directory.root_path(),
    };
    const auto listener = std::make_shared<Listener>(std::move(handlers));
    return std::make_unique<RunningTool>(
        listener,
        m_processes.run(request,
                        { .standardOutput = {},
                          .standardError = [listener](std::string_view bytes) { listener->hear(bytes); },
                          .ended = [listener](const auto& end) { listener->finish(end); } }));
}

void URLDownloader::discard(const WebAddress& address, const FilePath& directory)
{
    m_background.run([address, unfinished = UnfinishedDownloads(directory)] { unfinished.discard(address); });
}

}  // namespace quillet
