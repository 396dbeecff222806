#include "AppCore/StemSettingsStore.h"

#include "AppCore/SharedInstance.h"
#include "platform/files/UserDirectories.h"

namespace quillet {

StemSettingsStore& StemSettingsStore::shared() { return SharedInstance<StemSettingsStore>::get(); }

FilePath StemSettingsStore::stemsDirectory() const { return directory(stemsDirKey, "stems"); }

FilePath StemSettingsStore::dependenciesDirectory() const { return directory(depsDirKey, "venv"); }

FilePath StemSettingsStore::directory(std::string_view key, const char* nameAtHome) const
{
    if (const auto chosen = m_defaults.string(key))
        return *chosen;
    return homeDirectory() / ".quillet" / nameAtHome;
}

}  // namespace quillet
