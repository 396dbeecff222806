// Turns one song into six stem files, with a Python program in an environment of its own: builds that environment where it is
// missing, runs the separation, tells how far it is, and finds the stems that an earlier run has made. One song at a time.
// Threads: main thread, unless a member says otherwise; the disk is asked on others.
#pragma once

#include "AppCore/StemSettingsStore.h"
#include "app/stems/DependenciesFolder.h"
#include "app/stems/StemError.h"
#include "app/stems/StemFolder.h"
#include "platform/files/FileAttributes.h"
#include "platform/process/ProcessRunner.h"
#include "platform/schedule/BackgroundRunner.h"
#include "platform/schedule/Scheduler.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quillet {

struct StemSeparationPhase {
    enum class Kind { complete, failed, idle, installingEnvironment, separating, cancelling };

    Kind kind = Kind::idle;
    /// When complete: the file of each stem.
    StemFolder::Stems stems = {};
    /// When failed: what to tell the user.
    std::string message = {};

    /// Something is being done.
    [[nodiscard]] bool isRunning() const;
    bool operator==(const StemSeparationPhase&) const = default;
};

class StemSeparator final : public QObject {
    Q_OBJECT

public:
    /// All outlive the separator.
    struct Services {
        ProcessRunner& processes;
        BackgroundRunner& background;
        Scheduler& scheduler;
        const StemSettingsStore& settings;
        const FileAttributesReader& attributes;
        /// Where uv lies, and where the backend does; empty where nobody knows.
        FilePath executableDirectory;
        FilePath resourcesDirectory;
    };

    /// How long a child that is asked to end may take for it.
    static constexpr double terminationSeconds = 5;

    explicit StemSeparator(Services services);
    ~StemSeparator() override;
    StemSeparator(const StemSeparator&) = delete;
    StemSeparator& operator=(const StemSeparator&) = delete;

    /// The composition root's separator.
    static StemSeparator& shared();

    [[nodiscard]] const StemSeparationPhase& phase() const { return m_phase; }
    /// True from `separate` on, until `phase` says how it ended.
    [[nodiscard]] bool isRunning() const { return m_isRunning; }
    /// The last status line.
    [[nodiscard]] const std::string& progressMessage() const { return m_progressMessage; }
    /// Of the separation itself, 0 to 1; nothing while it is unknown.
    [[nodiscard]] std::optional<double> separationProgress() const { return m_separationProgress; }
    /// The song that `separate` was last asked for.
    [[nodiscard]] const FilePath& fileURL() const { return m_fileURL; }

    /// Separates the song, or finds its stems; `phase` says later how that ended. Ignored while one is separated.
    void separate(const FilePath& fileURL);
    /// Asks what runs to end; `phase` is idle when it has.
    void cancel();
    /// From an end back to the start; ignored while something runs.
    void reset();

    // ---- Any thread that may wait for a disk ----

    /// Whether there is no environment yet.
    [[nodiscard]] bool isFirstUse() const;
    /// Whether all stems of the song, as it is now, are on disk.
    [[nodiscard]] bool hasCachedStems(const FilePath& fileURL) const;
    /// Whether there are stems of the song as it was before it changed.
    [[nodiscard]] bool hasOutdatedStems(const FilePath& fileURL) const;
    [[nodiscard]] StemFolder folderOf(const FilePath& fileURL) const;
    /// The name of the song's folder.
    [[nodiscard]] static std::string pathHash(const FilePath& fileURL) { return StemFolder::pathHash(fileURL); }

Q_SIGNALS:
    void phaseChanged();
    void progressMessageChanged();
    void separationProgressChanged();

private:
    using Step = void (StemSeparator::*)();
    struct Findings;

    [[nodiscard]] DependenciesFolder dependencies() const;
    [[nodiscard]] FilePath uvURL() const;
    [[nodiscard]] FilePath scriptURL() const;
    [[nodiscard]] FilePath requirementsURL() const;
    [[nodiscard]] std::optional<FilePath> found(const FilePath& directory, const char* name) const;

    void begin(const Findings& findings);
    void runVenvCreate();
    void claimEnvironment();
    void runPipInstall();
    void finishSetup();
    void startSeparation();
    void runSeparation();
    void runProcess(const ProcessRequest& request, Step next);
    void endSetupStep(const std::expected<ProcessEnd, ProcessStartError>& end, Step next);
    void abandonSetup(const StemError& error);
    void takeProgress(std::string_view chunk);
    void endSeparation(const std::expected<ProcessEnd, ProcessStartError>& end);
    void abandonChild();

    /// Runs `job` beside the main thread, and `then` with its result on it, unless the separator is gone.
    template <typename Result> void inBackground(std::function<Result()> job, std::function<void(Result)> then);

    void setPhase(StemSeparationPhase phase);
    void setProgressMessage(std::string message);
    void setSeparationProgress(std::optional<double> progress);
    /// The end: idle if it was cancelled.
    void fail(const StemError& error);

    Services m_services;
    StemSeparationPhase m_phase;
    std::string m_progressMessage;
    std::optional<double> m_separationProgress;
    bool m_isRunning = false;
    bool m_isCancelled = false;

    FilePath m_fileURL;
    /// As it was when its separation began.
    std::optional<FileAttributes> m_song;
    /// Where this run works: settings may change meanwhile.
    std::optional<DependenciesFolder> m_dependencies;
    std::optional<StemFolder> m_folder;
    std::unique_ptr<RunningProcess> m_activeProcess;
    /// What the child's end would do.
    std::function<void(std::expected<ProcessEnd, ProcessStartError>)> m_childEnded;
    ScheduledTask m_termination;
    /// Late answers find out by it that the separator is gone.
    std::shared_ptr<StemSeparator*> m_self;
};

}  // namespace quillet
