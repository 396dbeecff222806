#include "app/download/DownloadSettingsStore.h"

#include "AppCore/SharedInstance.h"
#include "platform/files/UserDirectories.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace quillet {
namespace {

FilePath desktopsDownloadFolder()
{
    const QString named = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    // A desktop names the home directory itself where the user wants no such folder.
    if (named.isEmpty() || named == QDir::homePath())
        return homeDirectory() / "Downloads";
    return QFile::encodeName(named).toStdString();
}

}  // namespace

DownloadSettingsStore& DownloadSettingsStore::shared() { return SharedInstance<DownloadSettingsStore>::get(); }

FilePath DownloadSettingsStore::downloadDirectory() const
{
    if (const auto chosen = defaults.string(directoryKey))
        return *chosen;
    return desktopsDownloadFolder();
}

}  // namespace quillet
