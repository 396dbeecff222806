// Opens an audio file for the user: the one road by which every file gets into the program. It reads the file, finds its
// waveform (kept or computed) and its stems off the main thread, then puts everything into the state at once. It asks the user
// nothing and shows nothing: the state carries the progress, `onError` the failure.
// Threads: main thread.
#pragma once

#include "AppCore/PracticeStore.h"
#include "AppCore/RecentFilesStore.h"
#include "AppCore/SettingsStore.h"
#include "AppCore/StemMixStore.h"
#include "AppCore/StemSessionStore.h"
#include "AppCore/WaveformCache.h"
#include "app/core/AppState.h"
#include "app/waveform/WaveformGenerator.h"
#include "platform/base/FilePath.h"
#include "platform/media/AudioFile.h"
#include "platform/schedule/BackgroundRunner.h"
#include "platform/schedule/Scheduler.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace quillet {

/// Whether a file starts with what it was left with, or with the defaults.
enum class RestoreSettings { no, yes };

class FileLoader {
public:
    /// Outlive the loader, and the background's jobs that it has started. All but the state are used on threads of the
    /// background too.
    struct Services {
        AppState& state;
        Scheduler& scheduler;
        BackgroundRunner& background;
        AudioFileOpener& opener;
        WaveformGenerator::Resources waveforms;
        WaveformCache& waveformCache;
        SettingsStore& settings;
        StemSessionStore& stemSessions;
        RecentFilesStore& recentFiles;
        StemMixStore& stemMixes;
        const FileAttributesReader& attributes;
        PracticeStore& practices;
    };

    explicit FileLoader(Services services);
    ~FileLoader();
    FileLoader(const FileLoader&) = delete;
    FileLoader& operator=(const FileLoader&) = delete;

    /// Opens `url` in place of what is open or being opened; the last call wins, whichever file is ready first. A file that
    /// cannot be opened leaves none open. One that starts with the defaults and was practised before has its settings of then
    /// on offer in the state.
    void loadFile(const FilePath& url, RestoreSettings restoreSettings);

    /// Plays the open file's stems, a file under each key, from now on, and remembers them for it. Nothing happens if another
    /// file is opened meanwhile, or none of them can be.
    void activateStemMode(const std::map<std::string, FilePath>& stems);

    /// Puts the list of recent files into the state, a moment later; those that are gone leave it when the disks have answered.
    void refreshRecentFiles();

    /// `report` is given the sentence to show for every file that cannot be opened.
    void onError(std::function<void(const std::string& message)> report) { m_report = std::move(report); }

private:
    struct Request;
    class Job;

    /// Runs `action` on the main thread if `loadID` is current then.
    using Deliver = std::function<void(std::function<void(FileLoader&)> action)>;

    void finish(const Request& request, AppState::OpenedFile file);
    void chooseSettings(const Request& request, AppState::OpenedFile& file) const;
    void fail(const std::string& message);
    [[nodiscard]] Deliver delivery(std::int64_t loadID) const;

    Services m_services;
    /// The request whose results count; shared with the threads that work for it.
    std::shared_ptr<std::atomic<std::int64_t>> m_currentLoadID = std::make_shared<std::atomic<std::int64_t>>(0);
    std::function<void(const std::string& message)> m_report;
    /// Expires with the loader.
    std::shared_ptr<FileLoader*> m_self;
    std::int64_t m_recentFilesGeneration = 0;
};

}  // namespace quillet
