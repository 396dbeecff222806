// Numbers with one decimal, as the window's language writes them.
// Threads: main thread.
#pragma once

#include <QLocale>
#include <QString>

namespace quillet {

/// Like 12.5, with the language's decimal sign and without groups.
[[nodiscard]] inline QString decimalText(double value)
{
    QLocale locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale.toString(value, 'f', 1);
}

}  // namespace quillet
