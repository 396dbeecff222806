#include "app/ui/FileNames.h"

#include "platform/files/UserDirectories.h"

#include <QFile>
#include <QTextDocument>

#include <algorithm>
#include <map>
#include <string>

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

std::vector<QString> listNames(const std::vector<FilePath>& files)
{
    std::map<std::string, int> counts;
    for (const FilePath& file : files)
        ++counts[file.filename().native()];
    std::vector<QString> names;
    for (const FilePath& file : files)
        names.push_back(counts[file.filename().native()] < 2
                            ? fileName(file)
                            : QStringLiteral("%1 — %2").arg(fileName(file), abbreviatedPath(file.parent_path())));
    return names;
}

QString menuText(QString text) { return text.replace(QLatin1Char('&'), QLatin1String("&&")); }

QString toolTipText(const QString& text) { return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text; }

FilePath pathOf(const QString& localFile) { return QFile::encodeName(localFile).toStdString(); }

}  // namespace quillet
