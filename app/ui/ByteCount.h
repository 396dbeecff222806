// Sizes as the screen shows them, in binary units.
// Threads: callable from every thread.
#pragma once

#include <QLocale>
#include <QString>

#include <cstdint>

namespace quillet {

[[nodiscard]] inline QString byteCountText(std::int64_t bytes)
{
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
}

}  // namespace quillet
