#include "app/cli/StemPlaces.h"

#include "app/stems/StemFolder.h"
#include "platform/files/NormalPath.h"
#include "platform/files/SystemFileAttributes.h"

namespace quillet {

std::expected<void, std::string> StemPlaces::findStems(PlaybackOptions& options) const
{
    const StemFolder folder(m_settings.stemsDirectory(), normalPath(options.input));
    auto stems = folder.detectCachedStems();
    const std::string name = displayText(options.input);
    if (!stems)
        return std::unexpected("“" + name + "” has no stems yet; “quillet separate” makes them.");
    if (folder.isOutdated(SystemFileAttributes()))
        return std::unexpected("“" + name + "” has changed since its stems were made; “quillet separate” makes them again.");
    options.stems = std::move(*stems);
    return {};
}

}  // namespace quillet
