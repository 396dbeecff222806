#include "app/stems/StemSeparator.h"

#include "AppCore/SharedInstance.h"
#include "app/stems/BackendSentences.h"
#include "app/stems/SeparationOutput.h"
#include "platform/files/FileExists.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace quillet {
namespace {

using Kind = StemSeparationPhase::Kind;

constexpr const char* modelName = "htdemucs_6s";

/// Where a child works: uv would take a Python project in its working directory for ours.
FilePath neutralDirectory(const FilePath& absolute) { return absolute.root_path(); }

}  // namespace

bool StemSeparationPhase::isRunning() const
{
    return kind == Kind::installingEnvironment || kind == Kind::separating || kind == Kind::cancelling;
}

/// What is known before anything is begun.
struct StemSeparator::Findings {
    std::optional<StemFolder::Stems> stems;
    bool needsSetup = false;
    std::optional<StemError> obstacle;
    std::optional<FileAttributes> song;
};

StemSeparator::StemSeparator(Services services)
    : m_services(std::move(services)),
      m_self(std::make_shared<StemSeparator*>(this))
{
}

StemSeparator::~StemSeparator() = default;

StemSeparator& StemSeparator::shared() { return SharedInstance<StemSeparator>::get(); }

template <typename Result> void StemSeparator::inBackground(std::function<Result()> job, std::function<void(Result)> then)
{
    m_services.background.run(
        [&scheduler = m_services.scheduler, self = std::weak_ptr(m_self), job = std::move(job), then = std::move(then)] {
            scheduler.post([self, then, result = job()] {
                if (self.lock())
                    then(result);
            });
        });
}

// ---- Where things are ----

std::optional<FilePath> StemSeparator::found(const FilePath& directory, const char* name) const
{
    if (directory.empty() || !fileExists(directory / name))
        return std::nullopt;
    return directory / name;
}

FilePath StemSeparator::uvURL() const { return found(m_services.executableDirectory, "uv").value_or(FilePath()); }

FilePath StemSeparator::scriptURL() const
{
    return found(m_services.resourcesDirectory, "backend/separate.py").value_or(FilePath());
}

FilePath StemSeparator::requirementsURL() const
{
    return found(m_services.resourcesDirectory, "backend/requirements.txt").value_or(FilePath());
}

DependenciesFolder StemSeparator::dependencies() const
{
    return { m_services.settings.dependenciesDirectory(), requirementsURL() };
}

StemFolder StemSeparator::folderOf(const FilePath& fileURL) const { return { m_services.settings.stemsDirectory(), fileURL }; }

bool StemSeparator::isFirstUse() const { return !fileExists(dependencies().interpreter()); }

bool StemSeparator::hasCachedStems(const FilePath& fileURL) const
{
    const StemFolder folder = folderOf(fileURL);
    return folder.detectCachedStems() && !folder.isOutdated(m_services.attributes);
}

bool StemSeparator::hasOutdatedStems(const FilePath& fileURL) const
{
    const StemFolder folder = folderOf(fileURL);
    return folder.detectCachedStems() && folder.isOutdated(m_services.attributes);
}

// ---- The road of a separation ----

void StemSeparator::separate(const FilePath& fileURL)
{
    if (m_isRunning)
        return;
    m_isRunning = true;
    m_isCancelled = false;
    m_fileURL = fileURL;
    setProgressMessage({});
    setSeparationProgress(std::nullopt);
    m_folder = folderOf(fileURL);
    m_dependencies = dependencies();
    inBackground<Findings>(
        [folder = *m_folder, dependencies = *m_dependencies, song = fileURL, &attributes = m_services.attributes] {
            Findings findings;
            if (!folder.isOutdated(attributes))
                findings.stems = folder.detectCachedStems();
            if (findings.stems)
                return findings;
            findings.song = attributes.attributes(song);
            findings.needsSetup = dependencies.needsEnvironmentSetup();
            if (findings.needsSetup)
                findings.obstacle = dependencies.obstacle();
            if (findings.needsSetup && !findings.obstacle)
                dependencies.begin();
            return findings;
        },
        [this](const Findings& findings) { begin(findings); });
}

void StemSeparator::begin(const Findings& findings)
{
    m_song = findings.song;
    if (m_isCancelled)
        setPhase({ Kind::idle });
    else if (findings.stems)
        setPhase({ Kind::complete, *findings.stems });
    else if (findings.obstacle)
        fail(*findings.obstacle);
    else if (!findings.needsSetup)
        startSeparation();
    else {
        setPhase({ Kind::installingEnvironment });
        runVenvCreate();
    }
}

void StemSeparator::runVenvCreate()
{
    const FilePath uv = uvURL();
    if (uv.empty()) {
        fail(MissingBinary{ "uv" });
        return;
    }
    setProgressMessage(tr("Creating Python environment…").toStdString());
    const FilePath& folder = m_dependencies->path();
    runProcess({ uv, { "venv", "--python", "3.12", "--clear", folder.native() }, neutralDirectory(folder), ProcessInput::none },
               &StemSeparator::claimEnvironment);
}

void StemSeparator::claimEnvironment()
{
    inBackground<bool>(
        [dependencies = *m_dependencies] {
            dependencies.claim();
            return true;
        },
        [this](bool) { m_isCancelled ? abandonSetup(ProcessFailed{}) : runPipInstall(); });
}

void StemSeparator::runPipInstall()
{
    const FilePath uv = uvURL();
    const FilePath requirements = requirementsURL();
    if (uv.empty() || requirements.empty()) {
        fail(MissingBinary{ "uv" });
        return;
    }
    setProgressMessage(tr("Installing dependencies (this may take several minutes on first use)…").toStdString());
    const FilePath& folder = m_dependencies->path();
    runProcess({ uv,
                 { "pip", "install", "-r", requirements.native(), "--python", folder.native() },
                 neutralDirectory(folder),
                 ProcessInput::none },
               &StemSeparator::finishSetup);
}

void StemSeparator::finishSetup()
{
    inBackground<bool>(
        [dependencies = *m_dependencies] {
            dependencies.writeRequirementsHash();
            return true;
        },
        [this](bool) { m_isCancelled ? setPhase({ Kind::idle }) : startSeparation(); });
}

void StemSeparator::startSeparation()
{
    setPhase({ Kind::separating });
    setSeparationProgress(0.0);
    inBackground<std::error_code>(
        [folder = *m_folder] {
            std::error_code error;
            std::filesystem::create_directories(folder.path(), error);
            return error;
        },
        [this](std::error_code error) {
            if (error)
                fail(SystemRefused{ m_folder->path().native() + ": " + error.message() });
            else if (m_isCancelled)
                setPhase({ Kind::idle });
            else
                runSeparation();
        });
}

void StemSeparator::runSeparation()
{
    const FilePath script = scriptURL();
    if (script.empty()) {
        fail(MissingBinary{ "separate.py" });
        return;
    }
    m_childEnded = [this](const auto& end) { endSeparation(end); };
    const ProcessRequest request{ m_dependencies->interpreter(),
                                  { script.native(), "--input-file", m_fileURL.native(), "--model", modelName, "--output-dir",
                                    m_folder->path().native() },
                                  neutralDirectory(m_folder->path()),
                                  ProcessInput::none };
    m_activeProcess = m_services.processes.run(request,
                                               { .standardOutput = {},
                                                 .standardError = [this](std::string_view bytes) { takeProgress(bytes); },
                                                 .ended = [this](const auto& end) { m_childEnded(end); } });
}

void StemSeparator::takeProgress(std::string_view chunk)
{
    for (const ProgressUpdate& update : progressIn(chunk)) {
        const auto* message = std::get_if<ProgressMessage>(&update);
        if (message != nullptr)
            setProgressMessage(inUsersLanguage(message->text).toStdString());
        if (message == nullptr || message->isDone())
            setSeparationProgress(
                std::max(m_separationProgress.value_or(0), message != nullptr ? 1.0 : std::get<ProgressFraction>(update)));
    }
}

void StemSeparator::endSeparation(const std::expected<ProcessEnd, ProcessStartError>& end)
{
    m_termination.cancel();
    m_activeProcess.reset();
    if (m_isCancelled) {
        inBackground<bool>(
            [folder = *m_folder] {
                folder.remove();
                return true;
            },
            [this](bool) {
                setSeparationProgress(std::nullopt);
                setPhase({ Kind::idle });
            });
        return;
    }
    if (!end) {
        fail(SystemRefused{ end.error().description });
        return;
    }
    auto result = separationResult(end->status, end->standardOutput, end->standardError);
    if (!result) {
        fail(SeparationFailed{ std::move(result.error()) });
        return;
    }
    inBackground<StemFolder::Stems>(
        [folder = *m_folder, song = m_song, named = std::move(*result)] {
            if (song)
                folder.recordSong(*song);
            // Where a name is no text, what has been said of it is not exact.
            return folder.detectCachedStems().value_or(named);
        },
        [this](const StemFolder::Stems& stems) {
            if (m_isCancelled) {
                setPhase({ Kind::idle });
                return;
            }
            setSeparationProgress(1.0);
            setPhase({ Kind::complete, stems });
        });
}

void StemSeparator::runProcess(const ProcessRequest& request, Step next)
{
    m_childEnded = [this, next](const auto& end) { endSetupStep(end, next); };
    // What it prints is of no interest, and taken all the same.
    m_activeProcess = m_services.processes.run(request,
                                               { .standardOutput = [](std::string_view) {},
                                                 .standardError = {},
                                                 .ended = [this](const auto& end) { m_childEnded(end); } });
}

void StemSeparator::endSetupStep(const std::expected<ProcessEnd, ProcessStartError>& end, Step next)
{
    m_termination.cancel();
    m_activeProcess.reset();
    if (!m_isCancelled && end && end->status == 0) {
        (this->*next)();
        return;
    }
    abandonSetup(end ? StemError(ProcessFailed{ end->status, trimmedText(end->standardError) })
                     : StemError(SystemRefused{ end.error().description }));
}

/// Nothing that is half built stays.
void StemSeparator::abandonSetup(const StemError& error)
{
    inBackground<bool>(
        [dependencies = *m_dependencies] {
            dependencies.remove();
            return true;
        },
        [this, error](bool) { fail(error); });
}

// ---- Ends ----

void StemSeparator::cancel()
{
    if (!m_isRunning)
        return;
    m_isCancelled = true;
    setPhase({ Kind::cancelling });
    if (!m_activeProcess)
        return;
    m_activeProcess->terminate();
    m_termination = m_services.scheduler.after(terminationSeconds, [this] { abandonChild(); });
}

/// It does not end by itself.
void StemSeparator::abandonChild()
{
    m_activeProcess.reset();
    const auto ended = m_childEnded;
    ended(ProcessEnd{});
}

void StemSeparator::reset()
{
    if (m_isRunning)
        return;
    setPhase({ Kind::idle });
    setProgressMessage({});
    setSeparationProgress(std::nullopt);
}

void StemSeparator::fail(const StemError& error)
{
    setSeparationProgress(std::nullopt);
    setPhase(m_isCancelled ? StemSeparationPhase{ Kind::idle } : StemSeparationPhase{ Kind::failed, {}, description(error) });
}

void StemSeparator::setPhase(StemSeparationPhase phase)
{
    m_isRunning = phase.isRunning();
    if (m_phase == phase)
        return;
    m_phase = std::move(phase);
    Q_EMIT phaseChanged();
}

void StemSeparator::setProgressMessage(std::string message)
{
    if (m_progressMessage == message)
        return;
    m_progressMessage = std::move(message);
    Q_EMIT progressMessageChanged();
}

void StemSeparator::setSeparationProgress(std::optional<double> progress)
{
    if (m_separationProgress == progress)
        return;
    m_separationProgress = progress;
    Q_EMIT separationProgressChanged();
}

}  // namespace quillet
