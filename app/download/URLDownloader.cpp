#include "app/download/URLDownloader.h"

#include "AppCore/SharedInstance.h"
#include "platform/files/FileExists.h"

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

/// Of what stands behind the mark; nothing where it makes no sense.
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

/// Takes the lines of progress out of what the child says on standard error, which comes cut anywhere.
class ErrorText {
public:
    explicit ErrorText(std::function<void(const DownloadProgress&)> report)
        : m_report(std::move(report))
    {
    }

    void add(std::string_view bytes)
    {
        m_line += bytes;
        for (auto end = m_line.find('\n'); end != std::string::npos; end = m_line.find('\n')) {
            takeLine(std::string_view(m_line).substr(0, end + 1));
            m_line.erase(0, end + 1);
        }
    }

    /// Everything that was not progress.
    [[nodiscard]] std::string rest()
    {
        takeLine(std::exchange(m_line, {}));
        return std::move(m_text);
    }

private:
    void takeLine(std::string_view line)
    {
        if (!line.starts_with(progressMark)) {
            m_text += line;
            return;
        }
        line.remove_prefix(progressMark.size());
        while (line.ends_with('\n') || line.ends_with('\r'))
            line.remove_suffix(1);
        if (const auto progress = readProgress(line); progress && m_report)
            m_report(*progress);
    }

    std::function<void(const DownloadProgress&)> m_report;
    std::string m_line;
    std::string m_text;
};

URLDownloader::Outcome outcomeOf(const ProcessEnd& end, std::string_view errorText)
{
    if (end.status != 0)
        return std::unexpected(DownloadError{ DownloadError::Kind::processFailed, end.status, trimmedText(errorText) });
    std::string path = trimmedText(end.standardOutput);
    if (path.empty())
        return std::unexpected(DownloadError{ DownloadError::Kind::noOutputFile });
    return FilePath(std::move(path));
}

}  // namespace

URLDownloader::URLDownloader(ProcessRunner& processes, FilePath executableDirectory)
    : m_processes(processes),
      m_executableDirectory(std::move(executableDirectory))
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
    Tools tools{ *directory / "uv", *directory / "yt-dlp", *directory / "ffmpeg" };
    if (!isExecutableFile(tools.uv))
        return std::unexpected(DownloadError{ DownloadError::Kind::uvNotFound });
    // uv reads it: it need not be executable.
    if (!fileExists(tools.ytDlp))
        return std::unexpected(DownloadError{ DownloadError::Kind::ytDlpNotFound });
    if (!isExecutableFile(tools.ffmpeg))
        return std::unexpected(DownloadError{ DownloadError::Kind::ffmpegNotFound });
    return tools;
}

void URLDownloader::download(const WebAddress& address, const FilePath& directory, Handlers handlers)
{
    const auto tools = findTools();
    if (!tools) {
        handlers.ended(std::unexpected(tools.error()));
        return;
    }
    const ProcessRequest request{
        tools->uv,
        { "run", "--python", "3.12", tools->ytDlp.native(), "-x", "--no-playlist", "--audio-format", "m4a", "--ffmpeg-location",
          tools->ffmpeg.native(), "--print", "after_move:filepath", "-o", directory.native() + "/%(title)s.%(ext)s",
          address.absoluteText() },
        // Not where the program was started: uv would take a Python project there for ours.
        directory.root_path(),
    };
    const auto errorText = std::make_shared<ErrorText>(std::move(handlers.progress));
    m_processes.run(
        request,
        { [errorText](std::string_view bytes) { errorText->add(bytes); },
          [errorText, ended = std::move(handlers.ended)](std::expected<ProcessEnd, ProcessStartError> end) {
              const std::string text = errorText->rest();
              if (end)
                  ended(outcomeOf(*end, text));
              else
                  ended(std::unexpected(DownloadError{ DownloadError::Kind::launchFailed, 0, end.error().description }));
          } });
}

}  // namespace quillet
