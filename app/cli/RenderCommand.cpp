#include "app/cli/RenderCommand.h"

#include "app/cli/ProgressLine.h"
#include "app/cli/StemPlaces.h"
#include "app/export/Rendering.h"
#include "platform/media/MediaModule.h"
#include "platform/process/Interruption.h"

namespace quillet {

std::expected<int, std::string> renderFile(const RenderOptions& options)
{
    MediaModule media;
    const Interruption interruption;
    ProgressLine line;
    const RenderHandlers handlers{
        [&line](double fraction) { line.show("Rendering… " + std::to_string(static_cast<int>(100 * fraction)) + "%"); },
        [&interruption] { return interruption.requested(); },
    };
    RenderOptions found = options;
    if (found.playback.stemVolumes)
        if (auto stems = StemPlaces().findStems(found.playback); !stems)
            return std::unexpected(stems.error());
    const auto end = renderToFile(found, { media.audioFiles(), media.encoders() }, handlers);
    if (!end)
        return std::unexpected(end.error());
    return *end == RenderEnd::cancelled ? Interruption::exitStatus : 0;
}

}  // namespace quillet
