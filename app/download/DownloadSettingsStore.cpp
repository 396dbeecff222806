#include "app/download/DownloadSettingsStore.h"

#include "AppCore/SharedInstance.h"
#include "platform/files/UserDirectories.h"

namespace quillet {

DownloadSettingsStore& DownloadSettingsStore::shared() { return SharedInstance<DownloadSettingsStore>::get(); }

FilePath DownloadSettingsStore::downloadDirectory() const
{
    if (const auto chosen = defaults.string(directoryKey))
        return *chosen;
    return homeDirectory() / "Downloads";
}

}  // namespace quillet
