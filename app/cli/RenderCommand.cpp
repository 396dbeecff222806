#include "app/cli/RenderCommand.h"

#include "app/cli/Interruption.h"
#include "app/cli/PlaybackSession.h"
#include "app/cli/ProgressLine.h"
#include "app/cli/WavWriter.h"
#include "platform/audio/Limiter.h"
#include "platform/audio/OfflineOutput.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/media/MediaModule.h"
#include "platform/schedule/VirtualScheduler.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <vector>

namespace quillet {
namespace {

/// Frames between two looks at the clock: the precision of the pauses.
constexpr std::size_t blockFrames = 64;
/// What a stopped sound takes to fade.
constexpr int fadeBlocks = 4;
constexpr std::size_t samplesPerWrite = 1 << 16;

using Outcome = std::expected<int, std::string>;

/// Pulls sound and hands it on in larger pieces.
class SoundToFile {
public:
    SoundToFile(OfflineOutput& output, WavWriter& writer)
        : m_output(output),
          m_writer(writer)
    {
        m_pending.reserve(samplesPerWrite);
    }

    void skipBlock() { m_output.pull(m_block); }

    [[nodiscard]] std::expected<void, WriteError> writeBlock()
    {
        m_output.pull(m_block);
        m_pending.insert(m_pending.end(), m_block.begin(), m_block.end());
        return m_pending.size() < samplesPerWrite ? std::expected<void, WriteError>() : flush();
    }

    [[nodiscard]] std::expected<void, WriteError> flush()
    {
        auto written = m_writer.write(m_pending);
        m_pending.clear();
        return written;
    }

private:
    OfflineOutput& m_output;
    WavWriter& m_writer;
    std::array<float, 2 * blockFrames> m_block{};
    std::vector<float> m_pending;
};

bool isSameFile(const FilePath& one, const FilePath& other)
{
    std::error_code none;
    return std::filesystem::equivalent(one, other, none);
}

}  // namespace

Outcome renderFile(const RenderOptions& options)
{
    if (isSameFile(options.playback.input, options.output))
        return std::unexpected("“" + displayText(options.output) + "” is the song itself; choose another name for the output.");
    MediaModule media;
    VirtualScheduler scheduler;
    OfflineOutput output;
    PlaybackGraph graph(output, scheduler);
    PlaybackSession session(graph, media.audioFiles(), scheduler);
    if (auto opened = session.open(options.playback); !opened)
        return std::unexpected(opened.error());
    const int sampleRate = session.file().sampleRate();
    auto writer = WavWriter::create(options.output, sampleRate);
    if (!writer)
        return std::unexpected(describe(writer.error()));

    const Interruption interruption;
    ProgressLine progress;
    SoundToFile sound(output, **writer);
    const double blockSeconds = static_cast<double>(blockFrames) / sampleRate;
    const double totalSeconds = session.playingSeconds();
    bool finished = false;
    session.start([&finished] { finished = true; });
    // The limiter's delay is no part of the sound.
    static_assert(Limiter::delayFrames == static_cast<int>(blockFrames));
    sound.skipBlock();
    for (double time = 0; !finished; time += blockSeconds) {
        if (interruption.requested())
            return Interruption::exitStatus;
        if (auto written = sound.writeBlock(); !written)
            return std::unexpected(describe(written.error()));
        scheduler.advance(blockSeconds);
        progress.show("Rendering… " + std::to_string(std::clamp(static_cast<int>(100 * time / totalSeconds), 0, 100)) + "%");
    }
    session.stop();
    const int tailBlocks = options.playback.holdSeconds ? fadeBlocks : 1;
    for (int block = 0; block < tailBlocks; ++block)
        if (auto written = sound.writeBlock(); !written)
            return std::unexpected(describe(written.error()));
    if (auto written = sound.flush(); !written)
        return std::unexpected(describe(written.error()));
    if (auto named = (*writer)->finish(); !named)
        return std::unexpected(describe(named.error()));
    return 0;
}

}  // namespace quillet
