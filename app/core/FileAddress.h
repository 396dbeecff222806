// Addresses of local files, such as desktops hand them around. Paths are bytes and need not be text: the toolkit's own
// addresses lose what is not UTF-8.
// Threads: callable from every thread.
#pragma once

#include "platform/base/FilePath.h"

#include <QByteArray>

#include <optional>

namespace quillet {

/// The path in "file://HOST/PATH" or "file:/PATH", its percent signs read byte by byte; nothing for another address, or that of
/// another machine's file.
[[nodiscard]] std::optional<FilePath> localFile(QByteArray address);

/// "file://PATH"; `path` is absolute.
[[nodiscard]] QByteArray fileAddress(const FilePath& path);

}  // namespace quillet
