#include "app/ui/FileNames.h"

#include "platform/files/UserDirectories.h"

#include <QFile>
#include <QTextDocument>

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

std::vector<QString> listNames(const std::vector<FilePath>& files)
{
    std::vector<QString> names;
    for (const FilePath& file : files) {
        const auto isNamesake = [&](const FilePath& other) { return other.filename() == file.filename(); };
        names.push_back(std::ranges::count_if(files, isNamesake) < 2
                            ? fileName(file)
                            : QStringLiteral("%1 — %2").arg(fileName(file), abbreviatedPath(file.parent_path())));
    }
    return names;
}

QString menuText(QString text) { return text.replace(QLatin1Char('&'), QLatin1String("&&")); }

QString toolTipText(const QString& text) { return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text; }

FilePath pathOf(const QString& localFile) { return QFile::encodeName(localFile).toStdString(); }

}  // namespace quillet
