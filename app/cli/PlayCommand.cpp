#include "app/cli/PlayCommand.h"

#include "app/cli/ProgressLine.h"
#include "app/cli/StemPlaces.h"
#include "app/export/PlaybackSession.h"
#include "platform/audio/CubebOutputDevice.h"
#include "platform/audio/LiveOutput.h"
#include "platform/audio/NullOutputDevice.h"
#include "platform/audio/PlaybackGraph.h"
#include "platform/media/MediaModule.h"
#include "platform/process/Interruption.h"
#include "platform/schedule/QtRealtimeKit.h"
#include "platform/schedule/QtScheduler.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

namespace quillet {
namespace {

/// What a stopped sound takes to fade, and a little more.
constexpr double fadeSeconds = 0.02;
constexpr double progressSeconds = 0.1;
constexpr double finalTimeoutSeconds = 1;

std::string clockText(double seconds)
{
    const int minutes = static_cast<int>(seconds) / 60;
    char text[48];
    std::snprintf(text, sizeof text, "%d:%04.1f", minutes, seconds - 60.0 * minutes);
    return text;
}

}  // namespace

std::expected<int, std::string> playFile(const PlaybackOptions& options)
{
    PlaybackOptions found = options;
    if (found.stemVolumes)
        if (auto stems = StemPlaces().findStems(found); !stems)
            return std::unexpected(stems.error());
    MediaModule media;
    QtScheduler scheduler;
    const QtRealtimeKit realtimeKit(realtimeRequests());
    LiveOutput output(std::make_unique<CubebOutputDevice>(), std::make_unique<NullOutputDevice>(), scheduler);
    PlaybackGraph graph(output, scheduler);
    PlaybackSession session(graph, media.audioFiles(), scheduler);
    if (auto opened = session.open(found); !opened)
        return std::unexpected(opened.error());

    Interruption interruption;
    ProgressLine progress;
    graph.onOutputChange([&progress, wasHeard = true](AudioOutput::State state) mutable {
        const bool isHeard = state == AudioOutput::State::device;
        if (isHeard == wasHeard)
            return;
        wasHeard = isHeard;
        progress.clear();
        std::fputs(isHeard ? "The sound device is back.\n"
                           : "There is no sound device: playback goes on without sound until there is one.\n",
                   stderr);
    });
    ScheduledTask ending;
    const auto endAfter = [&](double seconds, int status) {
        ending = scheduler.after(seconds, [status] { QCoreApplication::exit(status); });
    };
    const ScheduledTask watch = scheduler.watch(interruption.descriptor(), [&] {
        interruption.acknowledge();
        session.stop();
        endAfter(graph.presentationLatencySeconds() + fadeSeconds, Interruption::exitStatus);
    });
    const ScheduledTask clock = scheduler.every(progressSeconds, [&] {
        progress.show(clockText(session.state().playbackPosition()) + " / " + clockText(session.state().audioDuration()));
    });
    session.start([&] { endAfter(graph.presentationLatencySeconds() + fadeSeconds, 0); });
    const int status = QCoreApplication::exec();
    if (!output.finish(finalTimeoutSeconds)) {
        // A sound server that does not answer keeps a thread.
        std::fflush(nullptr);
        std::_Exit(status);
    }
    return status;
}

}  // namespace quillet
