#include "AppCore/RecentFilesStore.h"

#include "AppCore/SharedInstance.h"
#include "platform/files/FileExists.h"

#include <algorithm>

namespace quillet {

RecentFilesStore& RecentFilesStore::shared() { return SharedInstance<RecentFilesStore>::get(); }

std::vector<FilePath> RecentFilesStore::listed() const
{
    const auto paths = storedPaths();
    return { paths.begin(), paths.end() };
}

std::vector<FilePath> RecentFilesStore::all()
{
    std::vector<std::string> gone = storedPaths();
    std::erase_if(gone, fileExists);
    const std::scoped_lock lock(m_mutex);
    std::vector<std::string> paths = storedPaths();
    if (std::erase_if(paths, [&](const std::string& path) { return std::ranges::find(gone, path) != gone.end(); }) > 0)
        m_defaults.setStringArray(storeKey, paths);
    return { paths.begin(), paths.end() };
}

void RecentFilesStore::push(const FilePath& url)
{
    const std::scoped_lock lock(m_mutex);
    std::vector<std::string> paths = storedPaths();
    std::erase(paths, url.native());
    paths.insert(paths.begin(), url.native());
    if (paths.size() > maxCount)
        paths.resize(maxCount);
    m_defaults.setStringArray(storeKey, paths);
}

void RecentFilesStore::clear()
{
    const std::scoped_lock lock(m_mutex);
    m_defaults.remove(storeKey);
}

std::vector<std::string> RecentFilesStore::storedPaths() const
{
    return m_defaults.stringArray(storeKey).value_or(std::vector<std::string>{});
}

}  // namespace quillet
