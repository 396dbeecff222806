#include "app/core/FileLoader.h"

#include "AppCore/PitchInputParser.h"
#include "AppCore/SpeedInputParser.h"
#include "app/playback/StemFiles.h"
#include "platform/files/FileExists.h"

#include <algorithm>
#include <expected>
#include <optional>
#include <utility>
#include <vector>

namespace quillet {
namespace {

/// 999 minutes and 59.999 seconds: what the fields for times can show.
constexpr double longestSeconds = 59999.999;

constexpr const char* unreadable = "Could not read audio file duration.";
constexpr const char* tooLong = "File duration exceeds the maximum supported length (999:59.999).";
constexpr const char* noWaveform = "Could not read the audio of the file. It may be damaged, or was changed while it was read.";

double durationSeconds(const AudioFile& file) { return static_cast<double>(file.length()) / file.sampleRate(); }

/// A record as the program may use it: the file may have become shorter since it was written (a region that is not in it any
/// more becomes the whole file), and the user may have written it with an editor.
FileSettings fitted(FileSettings settings, double duration)
{
    settings.regionStart = std::max(settings.regionStart, 0.0);
    settings.regionEnd = settings.regionEnd > 0 ? std::min(settings.regionEnd, duration) : duration;
    if (settings.regionStart >= duration || settings.regionEnd < settings.regionStart) {
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

struct FileLoader::LoadedFile {
    std::shared_ptr<AudioFile> file;
    std::vector<float> peaks;
    StemSession stemSession;
    /// Empty where there is nothing to restore.
    std::vector<StemFile> stemFiles;
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
            m_deliver([message = loaded.error()](FileLoader& loader) { loader.fail(message); });
            return;
        }
        // In a shared_ptr, since what can be posted can be copied.
        m_deliver([request = m_request, file = std::make_shared<LoadedFile>(std::move(*loaded))](FileLoader& loader) {
            loader.finish(request, std::move(*file));
        });
    }

private:
    [[nodiscard]] bool isCurrent() const { return *m_currentLoadID == m_request.loadID; }

    void show(std::string message) const
    {
        m_deliver([message = std::move(message)](FileLoader& loader) {
            loader.m_services.state.setLoadingState(LoadingState::loading(message));
        });
    }

    /// What an outdated request answers does not matter: it is not delivered.
    [[nodiscard]] std::expected<LoadedFile, std::string> load() const
    {
        LoadedFile loaded;
        auto file = m_services.opener.open(m_request.url);
        if (!file)
            return std::unexpected(unreadable);
        loaded.file = std::move(*file);
        if (durationSeconds(*loaded.file) > longestSeconds)
            return std::unexpected(tooLong);
        auto peaks = isCurrent() ? findPeaks() : std::vector<float>{};
        if (!peaks)
            return std::unexpected(noWaveform);
        loaded.peaks = std::move(*peaks);
        if (isCurrent())
            openStems(loaded);
        return loaded;
    }

    [[nodiscard]] std::optional<std::vector<float>> findPeaks() const
    {
        if (auto cached = m_services.waveformCache.get(m_request.url)) {
            show("Loading cached waveform...");
            return cached;
        }
        show("Generating waveform...");
        auto computed = WaveformGenerator::extract(m_services.waveforms, m_request.url,
                                                   [&, last = std::string()](double, const std::string& message) mutable {
                                                       if (message != last)
                                                           show(last = message);
                                                   });
        if (!computed)
            return std::nullopt;
        if (isCurrent())
            m_services.waveformCache.set(*computed, m_request.url);
        return std::move(*computed);
    }

    void openStems(LoadedFile& loaded) const
    {
        auto stems = m_services.stemSessions.load(m_request.url);
        if (!stems)
            return;
        loaded.stemSession.stems = std::move(*stems);
        if (loaded.stemSession.isRestorable(fileExists))
            loaded.stemFiles = openStemFiles(m_services.opener, loaded.stemSession.stems);
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
    auto& [state, engine, scheduler, background, opener, waveforms, waveformCache, settings, stemSessions, recentFiles] =
        m_services;
    state.saveSettingsNow();
    if (engine.isInStemMode()) {
        engine.exitStemMode();
        state.setStemSession(std::nullopt);
    }
    const Request request{ url, restoreSettings, ++*m_currentLoadID };
    state.setAudioFileURL(url);
    state.setLoadingState(LoadingState::loading(""));
    // Nothing of the file before can be played under the new name.
    engine.stop();
    engine.setAudioFile(nullptr);
    state.setIsPlaying(false);
    background.run(Job(m_services, request, m_currentLoadID, delivery(request.loadID)));
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

void FileLoader::finish(const Request& request, LoadedFile file)
{
    AppState& state = m_services.state;
    const double duration = durationSeconds(*file.file);
    m_services.engine.setAudioFile(std::move(file.file));
    state.setAudioDuration(duration);
    state.resetToDefaults(duration);
    if (request.restoreSettings == RestoreSettings::yes)
        if (const auto record = m_services.settings.load(request.url))
            state.applySettings(fitted(*record, duration));
    if (!file.stemFiles.empty()) {
        state.setStemSession(std::move(file.stemSession));
        m_services.engine.enterStemMode(std::move(file.stemFiles));
    }
    pushValuesToEngine();
    state.setWaveformSamples(std::move(file.peaks));
    state.setLoadingState(LoadingState::loaded());
    m_services.recentFiles.push(request.url);
    refreshRecentFiles();
}

void FileLoader::fail(const std::string& message)
{
    m_services.state.setLoadingState(LoadingState::idle());
    m_services.state.setAudioFileURL(std::nullopt);
    if (m_report)
        m_report(message);
}

void FileLoader::pushValuesToEngine()
{
    const AppState& state = m_services.state;
    AudioEngine& engine = m_services.engine;
    engine.timePitch().setRate(state.speed() / 100);
    engine.timePitch().setPitch(state.pitch());
    engine.eq().setBypass(!state.eqEnabled());
    for (std::size_t band = 0; band < state.eqGains().size(); ++band)
        engine.setEQGain(state.eqGains()[band], static_cast<int>(band));
}

void FileLoader::refreshRecentFiles()
{
    m_services.background.run([&store = m_services.recentFiles, &scheduler = m_services.scheduler, self = std::weak_ptr(m_self),
                               request = ++m_recentFilesRequests] {
        scheduler.post([self, request, files = store.all()] {
            const auto loader = self.lock();
            if (loader && (*loader)->m_recentFilesRequests == request)
                (*loader)->m_services.state.setRecentFiles(files);
        });
    });
}

}  // namespace quillet
