#include "app/core/FileAddress.h"

#include <QString>
#include <QSysInfo>

#include <algorithm>

namespace quillet {

std::optional<FilePath> localFile(QByteArray address)
{
    constexpr QByteArrayView scheme("file:");
    if (!address.startsWith(scheme))
        return std::nullopt;
    address.remove(0, scheme.size());
    if (address.startsWith("//")) {
        const QByteArray host = address.mid(2, std::max<qsizetype>(address.indexOf('/', 2) - 2, 0));
        if (!host.isEmpty() && host != "localhost" && host != QSysInfo::machineHostName().toUtf8())
            return std::nullopt;
        address.remove(0, 2 + host.size());
    }
    const QByteArray path = QByteArray::fromPercentEncoding(address);
    return path.startsWith('/') && !path.contains('\0') ? std::optional<FilePath>(path.toStdString()) : std::nullopt;
}

QByteArray fileAddress(const FilePath& path)
{
    return "file://" + QByteArray::fromStdString(path.native()).toPercentEncoding("/");
}

}  // namespace quillet
