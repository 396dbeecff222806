#include "app/cli/SeparateCommand.h"

#include "app/cli/ProgressLine.h"
#include "app/cli/StemPlaces.h"
#include "app/stems/StemExport.h"
#include "app/stems/StemSeparator.h"
#include "platform/files/NormalPath.h"
#include "platform/files/ProgramDirectories.h"
#include "platform/files/SystemFileAttributes.h"
#include "platform/process/Interruption.h"
#include "platform/process/QtProcessRunner.h"
#include "platform/schedule/QtScheduler.h"
#include "platform/schedule/ThreadRunner.h"

#include <QCoreApplication>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace quillet {
namespace {

using Kind = StemSeparationPhase::Kind;

constexpr int failed = 1;
/// What still runs beside the main thread when the command ends is the disk's.
constexpr double finalTimeoutSeconds = 5;

class Separating {
public:
    Separating(const SeparateOptions& options, StemSeparator& separator, Scheduler& scheduler)
        : m_options(options),
          m_separator(separator),
          m_scheduler(scheduler)
    {
        QObject::connect(&separator, &StemSeparator::phaseChanged, &separator, [this] { takePhase(); });
        QObject::connect(&separator, &StemSeparator::progressMessageChanged, &separator, [this] { showProgress(); });
        QObject::connect(&separator, &StemSeparator::separationProgressChanged, &separator, [this] { showProgress(); });
    }

    void start() { separateNext(); }

    /// Ends the song that is separated, and the command.
    void interrupt()
    {
        m_isInterrupted = true;
        if (m_separator.isRunning())
            m_separator.cancel();
        else
            QCoreApplication::exit(Interruption::exitStatus);
    }

private:
    [[nodiscard]] const FilePath& song() const { return m_options.songs[m_next - 1]; }

    void separateNext()
    {
        if (m_isInterrupted || m_next == m_options.songs.size()) {
            finish();
            return;
        }
        ++m_next;
        m_separator.reset();
        m_separator.separate(normalPath(song()));
    }

    void takePhase()
    {
        const StemSeparationPhase& phase = m_separator.phase();
        showProgress();
        if (phase.kind == Kind::failed)
            note(phase.message);
        else if (phase.kind == Kind::complete && m_options.output)
            copy(phase.stems);
        if (phase.kind == Kind::failed || phase.kind == Kind::complete || (phase.kind == Kind::idle && m_isInterrupted))
            m_scheduler.post([this] { separateNext(); });
    }

    void copy(const StemFolder::Stems& stems)
    {
        m_line.show(displayText(song()) + ": copying…");
        if (const auto copied = exportStems(stems, song(), *m_options.output); !copied)
            note(copied.error());
    }

    void note(const std::string& sentence)
    {
        m_line.clear();
        std::fprintf(stderr, "quillet: %s: %s\n", displayText(song()).c_str(), sentence.c_str());
        m_failed.push_back(song());
    }

    void showProgress()
    {
        if (m_next == 0)
            return;
        std::string text = displayText(song().filename());
        if (m_options.songs.size() > 1)
            text = "(" + std::to_string(m_next) + "/" + std::to_string(m_options.songs.size()) + ") " + text;
        if (m_separator.separationProgress())
            text += " " + std::to_string(std::lround(100 * *m_separator.separationProgress())) + "%";
        m_line.show(text + " " + m_separator.progressMessage());
    }

    void finish()
    {
        m_line.clear();
        if (m_options.songs.size() > 1 && !m_failed.empty()) {
            std::fputs("quillet: not separated:\n", stderr);
            for (const FilePath& file : m_failed)
                std::fprintf(stderr, "  %s\n", displayText(file).c_str());
        }
        QCoreApplication::exit(m_isInterrupted ? Interruption::exitStatus : m_failed.empty() ? 0 : failed);
    }

    const SeparateOptions& m_options;
    StemSeparator& m_separator;
    Scheduler& m_scheduler;
    ProgressLine m_line;
    std::size_t m_next = 0;
    std::vector<FilePath> m_failed;
    bool m_isInterrupted = false;
};

}  // namespace

std::expected<int, std::string> separateSongs(const SeparateOptions& options)
{
    QtScheduler scheduler;
    ThreadRunner background;
    QtProcessRunner processes;
    const SystemFileAttributes attributes;
    const StemPlaces places;
    StemSeparator separator(
        { processes, background, scheduler, places.settings(), attributes, executableDirectory(), resourcesDirectory() });
    Separating separating(options, separator, scheduler);
    Interruption interruption;
    const ScheduledTask watch = scheduler.watch(interruption.descriptor(), [&] {
        interruption.acknowledge();
        separating.interrupt();
    });
    scheduler.post([&separating] { separating.start(); });
    const int status = QCoreApplication::exec();
    if (!background.finish(finalTimeoutSeconds)) {
        // A disk that does not answer keeps a thread: what it may still touch is left alone.
        std::fflush(nullptr);
        std::_Exit(status);
    }
    return status;
}

}  // namespace quillet
