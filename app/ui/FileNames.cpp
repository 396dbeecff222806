#include "app/ui/FileNames.h"

#include <QFile>

namespace quillet {

QString fileName(const FilePath& path) { return QString::fromStdString(displayText(path.filename())); }

QString pathText(const FilePath& path) { return QString::fromStdString(displayText(path)); }

QString menuText(QString text) { return text.replace(QLatin1Char('&'), QLatin1String("&&")); }

FilePath pathOf(const QString& localFile) { return QFile::encodeName(localFile).toStdString(); }

}  // namespace quillet
