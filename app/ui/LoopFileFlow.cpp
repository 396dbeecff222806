#include "app/ui/LoopFileFlow.h"

#include "app/export/OutputFile.h"
#include "app/ui/FileNames.h"
#include "app/ui/FilePanel.h"
#include "app/ui/Questions.h"

#include <QFile>
#include <QStandardPaths>
#include <QStringList>

#include <utility>

namespace quillet {
namespace {

std::expected<void, WriteError> writeText(const FilePath& target, const std::string& text)
{
    auto file = OutputFile::create(target);
    if (!file)
        return std::unexpected(file.error());
    if (auto written = (*file)->write(std::as_bytes(std::span(text))); !written)
        return written;
    return (*file)->finish();
}

/// Or a sentence for the user.
std::expected<LoopFile, QString> readLoopFile(const FilePath& path)
{
    QFile file(QFile::decodeName(QByteArray::fromStdString(path.native())));
    if (!file.open(QIODevice::ReadOnly))
        return std::unexpected(LoopFileFlow::tr("“%1” cannot be read: %2.").arg(fileName(path), file.errorString()));
    // One byte more shows that it is too large.
    const QByteArray text = file.read(static_cast<qint64>(LoopFile::maxBytes) + 1);
    auto loops = decodeLoopFile({ text.constData(), static_cast<std::size_t>(text.size()) });
    if (loops)
        return std::move(*loops);
    return std::unexpected(
        loops.error() == LoopFileError::isNewer
            ? LoopFileFlow::tr("“%1” was written by a newer version of Quillet. Update Quillet to read it.").arg(fileName(path))
            : LoopFileFlow::tr("“%1” holds no loops.").arg(fileName(path)));
}

FilePath musicFolder() { return pathOf(QStandardPaths::writableLocation(QStandardPaths::MusicLocation)); }

}  // namespace

LoopFileFlow::LoopFileFlow(const Services& services, FlowHost host)
    : m_services(services),
      m_host(std::move(host))
{
    // What has been said was of the song that was open then.
    connect(&m_services.state, &AppState::audioFileURLChanged, this, [this] { delete m_notice; });
}

template <typename Work, typename Finished> void LoopFileFlow::run(Work work, Finished finished)
{
    m_services.background.run([&scheduler = m_services.scheduler, self = std::weak_ptr(m_self), work = std::move(work),
                               finished = std::move(finished)] {
        scheduler.post([self, finished, answer = work()] {
            if (const auto flow = self.lock())
                finished(**flow, answer);
        });
    });
}

void LoopFileFlow::askWhereToSave()
{
    if (m_services.state.loops().empty())
        return;
    // It goes with the window, as the flow does.
    new FilePanel(
        m_host.window, { tr("Save Loops to a File"), musicFolder(), true, tr("Save"), {} },
        [this](const std::vector<FilePath>& folders) { saveTo(folders.front()); }, m_host.openSheet);
}

void LoopFileFlow::saveTo(const FilePath& folder)
{
    const AppState& state = m_services.state;
    // Another song may have been opened meanwhile.
    if (!state.isLoaded() || state.loops().empty())
        return;
    const FilePath song = *state.audioFileURL();
    const LoopFile file{ song.filename().native(), fingerprintOf(state.waveformSamples(), state.audioDuration()),
                         state.loops() };
    const FilePath wanted = folder / (song.stem().native() + " loops.json");
    run(
        [file, wanted] {
            const FilePath target = freeName(wanted);
            const auto written = writeText(target, encodeLoopFile(file));
            return written ? tr("“%1” has been written.").arg(pathText(target))
                           : QString::fromStdString(describe(written.error()));
        },
        [](LoopFileFlow& flow, const QString& sentence) { flow.say(sentence); });
}

void LoopFileFlow::askWhatToLoad()
{
    if (!m_services.state.isLoaded())
        return;
    new FilePanel(
        m_host.window,
        { tr("Load Loops from a File"), musicFolder(), false, {}, { { tr("Files of loops"), { QStringLiteral("*.json") } } } },
        [this](const std::vector<FilePath>& files) { load(files.front()); }, m_host.openSheet);
}

void LoopFileFlow::load(const FilePath& file)
{
    run([file] { return readLoopFile(file); },
        [file, song = m_services.state.audioFileURL()](LoopFileFlow& flow, const Loaded& loaded) {
            // They were meant for the song that was open then.
            if (flow.m_services.state.isLoaded() && flow.m_services.state.audioFileURL() == song)
                flow.take(file, loaded);
        });
}

void LoopFileFlow::take(const FilePath& file, const Loaded& loaded)
{
    const AppState& state = m_services.state;
    if (!loaded) {
        say(loaded.error());
        return;
    }
    if (areOfOneSong(loaded->song, fingerprintOf(state.waveformSamples(), state.audioDuration()))) {
        add(*loaded);
        return;
    }
    const QString question = loaded->songName.empty()
        ? tr("“%1” holds the loops of another song.").arg(fileName(file))
        : tr("“%1” holds the loops of another song: “%2”.").arg(fileName(file), QString::fromStdString(loaded->songName));
    m_host.openSheet(*makeQuestion(m_host.window,
                                   { question, tr("They may lie elsewhere in this one."), tr("Add Them Anyway") },
                                   [self = std::weak_ptr(m_self), loops = *loaded, song = state.audioFileURL()] {
                                       const auto flow = self.lock();
                                       if (flow && (*flow)->m_services.state.audioFileURL() == song)
                                           (*flow)->add(loops);
                                   }));
}

void LoopFileFlow::add(const LoopFile& file)
{
    AppState& state = m_services.state;
    LoopMerge merge = mergeLoops(state.loops(), file.loops, state.audioDuration());
    state.setLoops(std::move(merge.loops));
    QStringList parts{ tr("Loops added: %1.").arg(merge.added) };
    if (merge.alreadyThere > 0)
        parts << tr("There already: %1.").arg(merge.alreadyThere);
    if (merge.beyondEnd > 0)
        parts << tr("Beyond the song’s end: %1.").arg(merge.beyondEnd);
    if (merge.tooMany > 0)
        parts << tr("More than a song can have: %1.").arg(merge.tooMany);
    say(parts.join(QLatin1Char(' ')));
}

void LoopFileFlow::say(const QString& sentence)
{
    delete m_notice;
    m_notice = new ClosableNotice(m_services.theme, sentence);
    m_host.addNotice(*m_notice);
}

}  // namespace quillet
