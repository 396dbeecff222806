#include "app/ui/FileNames.h"

#include "platform/files/UserDirectories.h"

#include <QFile>

#include <algorithm>

namespace quillet {

QString fileName(const FilePath& path) { return QString::fromStdString(displayText(path.filename())); }

QString pathText(const FilePath& path) { return QString::fromStdString(displayText(path)); }

QString abbreviatedPath(const FilePath& path)
{
    const FilePath home = homeDirectory();
    if (home.empty() || std::ranges::mismatch(home, path).in1 != home.end())
        return pathText(path);
    return pathText("~" / path.lexically_relative(home).lexically_normal());
}

QString menuText(QString text) { return text.replace(QLatin1Char('&'), QLatin1String("&&")); }

FilePath pathOf(const QString& localFile) { return QFile::encodeName(localFile).toStdString(); }

}  // namespace quillet
