#include "AppCore/RecentFilesStore.h"

#include "AppCore/SharedInstance.h"

#include <filesystem>
#include <system_error>

namespace quillet {

RecentFilesStore& RecentFilesStore::shared() { return SharedInstance<RecentFilesStore>::get(); }

std::vector<FilePath> RecentFilesStore::all()
{
    std::vector<std::string> paths = storedPaths();
    const auto isGone = [](const std::string& path) {
        std::error_code unreadable;
        return !std::filesystem::exists(path, unreadable);
    };
    if (std::erase_if(paths, isGone) > 0)
        m_defaults.setStringArray(storeKey, paths);
    return { paths.begin(), paths.end() };
}

void RecentFilesStore::push(const FilePath& url)
{
    std::vector<std::string> paths = storedPaths();
    std::erase(paths, url.native());
    paths.insert(paths.begin(), url.native());
    if (paths.size() > maxCount)
        paths.resize(maxCount);
    m_defaults.setStringArray(storeKey, paths);
}

void RecentFilesStore::clear() { m_defaults.remove(storeKey); }

std::vector<std::string> RecentFilesStore::storedPaths() const
{
    return m_defaults.stringArray(storeKey).value_or(std::vector<std::string>{});
}

}  // namespace quillet
