#include "app/export/Rendering.h"

#include "app/export/PlaybackSession.h"
#include "app/export/SoundWriter.h"
#include "platform/audio/Limiter.h"
#include "platform/audio/OfflineOutput.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/schedule/VirtualScheduler.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <vector>

namespace quillet {
namespace {

/// Frames between two looks at the clock.
constexpr std::int64_t blockFrames = OfflineOutput::blockFrames;
constexpr std::size_t samplesPerWrite = 1 << 16;

/// Pulls sound and hands it on in larger pieces, without the delay that it comes with.
class SoundToFile {
public:
    SoundToFile(OfflineOutput& output, SoundWriter& writer)
        : m_output(output),
          m_writer(writer)
    {
        m_pending.reserve(samplesPerWrite);
    }

    [[nodiscard]] std::int64_t framesPulled() const { return m_pulled; }

    [[nodiscard]] std::expected<void, WriteError> writeBlock(std::int64_t frames = blockFrames)
    {
        std::array<float, 2 * blockFrames> block;
        const auto pulled = std::span(block).first(static_cast<std::size_t>(2 * frames));
        m_output.pull(pulled);
        m_pulled += frames;
        const std::int64_t kept = std::clamp<std::int64_t>(m_pulled - Limiter::delayFrames, 0, frames);
        const auto sound = pulled.last(static_cast<std::size_t>(2 * kept));
        m_pending.insert(m_pending.end(), sound.begin(), sound.end());
        return m_pending.size() < samplesPerWrite ? std::expected<void, WriteError>() : flush();
    }

    /// Writes what is still on its way, so that the file ends with the first `frames` frames that were pulled.
    [[nodiscard]] std::expected<void, WriteError> finish(std::int64_t frames)
    {
        const std::int64_t missing = frames + Limiter::delayFrames - m_pulled;
        for (std::int64_t left = missing; left > 0; left -= blockFrames)
            if (auto written = writeBlock(std::min(left, blockFrames)); !written)
                return written;
        const std::size_t surplus =
            std::min(m_pending.size(), static_cast<std::size_t>(2 * std::max<std::int64_t>(0, -missing)));
        return m_writer.write(std::span(m_pending).first(m_pending.size() - surplus));
    }

private:
    [[nodiscard]] std::expected<void, WriteError> flush()
    {
        // The newest frames stay: the sound may prove to have ended before them.
        const std::size_t kept = std::min(m_pending.size(), static_cast<std::size_t>(2 * blockFrames));
        auto written = m_writer.write(std::span(m_pending).first(m_pending.size() - kept));
        m_pending.erase(m_pending.begin(), m_pending.end() - static_cast<std::ptrdiff_t>(kept));
        return written;
    }

    OfflineOutput& m_output;
    SoundWriter& m_writer;
    std::int64_t m_pulled = 0;
    std::vector<float> m_pending;
};

bool isSameFile(const FilePath& one, const FilePath& other)
{
    std::error_code none;
    return std::filesystem::equivalent(one, other, none);
}

}  // namespace

std::expected<RenderEnd, std::string> renderToFile(const RenderOptions& options, const RenderMedia& media,
                                                   const RenderHandlers& handlers)
{
    if (isSameFile(options.playback.input, options.output))
        return std::unexpected("“" + displayText(options.output) + "” is the song itself; choose another name for the output.");
    VirtualScheduler scheduler;
    OfflineOutput output;
    PlaybackGraph graph(output, scheduler);
    PlaybackSession session(graph, media.opener, scheduler);
    if (auto opened = session.open(options.playback); !opened)
        return std::unexpected(opened.error());
    const int sampleRate = writtenRate(options.output, session.file().sampleRate());
    output.fixSampleRate(sampleRate);
    auto writer = makeSoundWriter(options.output, sampleRate, session.file().tags(), media.encoders);
    if (!writer)
        return std::unexpected(describe(writer.error()));

    SoundToFile sound(output, **writer);
    const double blockSeconds = static_cast<double>(blockFrames) / sampleRate;
    const double totalSeconds = session.playingSeconds();
    bool finished = false;
    session.start([&finished] { finished = true; });
    for (double time = 0; !finished; time += blockSeconds) {
        if (handlers.isCancelled())
            return RenderEnd::cancelled;
        if (auto written = sound.writeBlock(); !written)
            return std::unexpected(describe(written.error()));
        scheduler.advance(blockSeconds);
        handlers.progress(std::clamp(time / totalSeconds, 0.0, 1.0));
    }
    if (auto written = sound.finish(sound.framesPulled() - graph.framesSinceEnd()); !written)
        return std::unexpected(describe(written.error()));
    if (session.file().readErrors() > 0)
        return std::unexpected(describe(AudioFileError::unreadable, options.playback.input));
    if (auto named = (*writer)->finish(); !named)
        return std::unexpected(describe(named.error()));
    return RenderEnd::finished;
}

}  // namespace quillet
