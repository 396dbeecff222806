#include "app/core/FileLoader.h"

#include "AppCore/PitchInputParser.h"
#include "AppCore/SpeedInputParser.h"
#include "app/playback/StemFiles.h"
#include "app/stems/StemFolder.h"
#include "platform/files/FileExists.h"
#include "platform/files/NormalPath.h"

#include <QCoreApplication>
#include <QString>

#include <algorithm>
#include <expected>
#include <optional>
#include <utility>
#include <vector>

namespace quillet {
namespace {

/// 999 minutes and 59.999 seconds: what the fields for times can show.
constexpr double maxSeconds = 59999.999;

constexpr const char* unreadable = QT_TRANSLATE_NOOP("FileLoader", "Could not read audio file duration.");
constexpr const char* tooLong =
    QT_TRANSLATE_NOOP("FileLoader", "File duration exceeds the maximum supported length (999:59.999).");
constexpr const char* noWaveform = QT_TRANSLATE_NOOP(
    "FileLoader", "Could not read the audio of the file. It may be damaged, or was changed while it was read.");

struct Text {
    Q_DECLARE_TR_FUNCTIONS(FileLoader)
};

double durationSeconds(const AudioFile& file) { return static_cast<double>(file.length()) / file.sampleRate(); }

/// A record as the program may use it: the file may have become shorter since it was written (a region that is not in it any
/// more becomes the whole file), and the user may have written it with an editor.
FileSettings fitted(FileSettings settings, double duration)
{
    settings.regionStart = std::max(settings.regionStart, 0.0);
    settings.regionEnd = settings.regionEnd > 0 ? std::min(settings.regionEnd, duration) : duration;
    if (settings.regionStart > duration || settings.regionEnd < settings.regionStart) {
        settings.regionStart = 0;
        settings.regionEnd = duration;
    }
    settings.speed = std::clamp(settings.speed, SpeedInputParser::min, SpeedInputParser::max);
    settings.pitch = std::clamp(settings.pitch, PitchInputParser::min, PitchInputParser::max);
    settings.eqGains.resize(EqualizerNode::bandCount);
    for (double& gain : settings.eqGains)
        gain = std::clamp(gain, -EqualizerNode::maximumGainDb, EqualizerNode::maximumGainDb);
    if (!(settings.speedStep > 0 && settings.speedStep <= 100))
        settings.speedStep = FileSettings().speedStep;
    settings.loopDelaySeconds = std::clamp<std::int64_t>(settings.loopDelaySeconds, 0, 99);
    settings.loopDelayMilliseconds = std::clamp<std::int64_t>(settings.loopDelayMilliseconds, 0, 999);
    return settings;
}

}  // namespace

struct FileLoader::Request {
    FilePath url;
    RestoreSettings restoreSettings;
    std::int64_t loadID;
};

// ---- Background threads ----

/// What is done for one request beside the main thread.
class FileLoader::Job {
public:
    Job(const Services& services, const Request& request, std::shared_ptr<const std::atomic<std::int64_t>> currentLoadID,
        Deliver deliver)
        : m_services(services),
          m_request(request),
          m_currentLoadID(std::move(currentLoadID)),
          m_deliver(std::move(deliver))
    {
    }

    void operator()() const
    {
        auto loaded = load();
        if (!loaded) {
            m_deliver([message = Text::tr(loaded.error()).toStdString()](FileLoader& loader) { loader.fail(message); });
            return;
        }
        // In a shared_ptr, since what can be posted can be copied.
        m_deliver([request = m_request, file = std::make_shared<AppState::OpenedFile>(std::move(*loaded))](FileLoader& loader) {
            loader.finish(request, std::move(*file));
        });
    }

private:
    [[nodiscard]] bool isCurrent() const { return *m_currentLoadID == m_request.loadID; }

    void show(const QString& message, std::optional<double> fraction = std::nullopt) const
    {
        m_deliver([message = message.toStdString(), fraction](FileLoader& loader) {
            loader.m_services.state.setLoadingState(LoadingState::loading(message, fraction));
        });
    }

    /// The file, or the sentence that says why there is none. What an outdated request answers does not matter: it is not
    /// delivered.
    [[nodiscard]] std::expected<AppState::OpenedFile, const char*> load() const
    {
        AppState::OpenedFile loaded;
        auto file = m_services.opener.open(m_request.url);
        if (!file)
            return std::unexpected(unreadable);
        loaded.audio = std::move(*file);
        if (durationSeconds(*loaded.audio) > maxSeconds)
            return std::unexpected(tooLong);
        auto peaks = isCurrent() ? findPeaks() : std::vector<float>{};
        if (!peaks)
            return std::unexpected(noWaveform);
        loaded.peaks = std::move(*peaks);
        loaded.practice = m_services.practices.load(m_request.url);
        if (isCurrent())
            openStems(loaded);
        return loaded;
    }

    [[nodiscard]] std::optional<std::vector<float>> findPeaks() const
    {
        if (auto cached = m_services.waveformCache.get(m_request.url)) {
            show(Text::tr("Loading cached waveform..."));
            return cached;
        }
        show(Text::tr("Generating waveform..."));
        const auto report = [this, last = -1](double fraction, const std::string&) mutable {
            const int percent = static_cast<int>(fraction * 100);
            if (std::exchange(last, percent) != percent)
                show(Text::tr("Generating waveform... %1%").arg(percent), fraction);
        };
        auto computed = WaveformGenerator::extract(m_services.waveforms, m_request.url, report);
        if (!computed)
            return std::nullopt;
        if (isCurrent())
            m_services.waveformCache.set(*computed, m_request.url);
        return std::move(*computed);
    }

    void openStems(AppState::OpenedFile& loaded) const
    {
        auto stems = m_services.stemSessions.load(m_request.url);
        if (!stems)
            return;
        loaded.stems.stems = std::move(*stems);
        if (!loaded.stems.isRestorable(fileExists)
            || StemFolder::containing(loaded.stems.stems.front().fileURL, m_request.url).isOutdated(m_services.attributes))
            return;
        loaded.stemFiles = openStemFiles(m_services.opener, loaded.stems.stems);
        loaded.stemMix = m_services.stemMixes.load(m_request.url);
    }

    Services m_services;
    Request m_request;
    std::shared_ptr<const std::atomic<std::int64_t>> m_currentLoadID;
    Deliver m_deliver;
};

// ---- Main thread ----

FileLoader::FileLoader(Services services)
    : m_services(std::move(services)),
      m_self(std::make_shared<FileLoader*>(this))
{
}

/// What is still on its way counts no more.
FileLoader::~FileLoader() { ++*m_currentLoadID; }

void FileLoader::loadFile(const FilePath& url, RestoreSettings restoreSettings)
{
    const Request request{ normalPath(url), restoreSettings, ++*m_currentLoadID };
    m_services.state.beginOpening(request.url);
    m_services.background.run(Job(m_services, request, m_currentLoadID, delivery(request.loadID)));
}

void FileLoader::activateStemMode(const std::map<std::string, FilePath>& stems)
{
    const auto& url = m_services.state.audioFileURL();
    if (!url || !m_services.state.isLoaded())
        return;
    m_services.background.run([services = m_services, url = *url, session = StemSession::fromSeparation(stems),
                               deliver = delivery(*m_currentLoadID)] {
        auto files = openStemFiles(services.opener, session.stems);
        if (files.empty())
            return;
        deliver([session, files, mix = services.stemMixes.load(url)](FileLoader& loader) {
            loader.m_services.state.enterStemMode(session, files, mix);
            loader.m_services.state.saveStemSession();
        });
    });
}

FileLoader::Deliver FileLoader::delivery(std::int64_t loadID) const
{
    return [&scheduler = m_services.scheduler, self = std::weak_ptr(m_self), loadID](std::function<void(FileLoader&)> action) {
        scheduler.post([self, loadID, action = std::move(action)] {
            const auto loader = self.lock();
            if (loader && *(*loader)->m_currentLoadID == loadID)
                action(**loader);
        });
    };
}

void FileLoader::finish(const Request& request, AppState::OpenedFile file)
{
    chooseSettings(request, file);
    m_services.state.finishOpening(std::move(file));
    m_services.recentFiles.push(request.url);
    refreshRecentFiles();
}

/// What the file starts with, and what it is offered: what it was practised with before, or had been when it began with the
/// defaults the last time.
void FileLoader::chooseSettings(const Request& request, AppState::OpenedFile& file) const
{
    const double duration = durationSeconds(*file.audio);
    FileSettings defaults;
    defaults.regionEnd = duration;
    const auto differing = [&](const std::optional<FileSettings>& record) {
        const auto settings = record ? std::optional(fitted(*record, duration)) : std::nullopt;
        return settings != defaults ? settings : std::nullopt;
    };
    const auto kept = differing(m_services.settings.load(request.url));
    if (kept && request.restoreSettings == RestoreSettings::yes)
        file.settings = kept;
    else
        file.offeredSettings = kept ? kept : differing(m_services.settings.loadAside(request.url));
}

void FileLoader::fail(const std::string& message)
{
    m_services.state.failOpening();
    if (m_report)
        m_report(message);
    // A file that is gone leaves the list.
    refreshRecentFiles();
}

void FileLoader::refreshRecentFiles()
{
    m_services.background.run([&store = m_services.recentFiles, &scheduler = m_services.scheduler, self = std::weak_ptr(m_self),
                               generation = ++m_recentFilesGeneration] {
        const auto show = [&](std::vector<FilePath> files) {
            scheduler.post([self, generation, files = std::move(files)] {
                const auto loader = self.lock();
                if (loader && (*loader)->m_recentFilesGeneration == generation)
                    (*loader)->m_services.state.setRecentFiles(files);
            });
        };
        // At once, and then again without those that are gone: a disk may take long to answer.
        show(store.listed());
        show(store.all());
    });
}

}  // namespace quillet
