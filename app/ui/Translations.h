// The language in which the window speaks: the user's choice, or else the first of the desktop's languages that there is.
// Threads: main thread.
#pragma once

#include "platform/defaults/DefaultsDomain.h"

#include <QLocale>
#include <QString>
#include <QTranslator>

#include <array>
#include <string>

namespace quillet {

struct Language {
    /// As in ISO 639-1.
    const char* code;
    /// In the language itself.
    const char* name;
};

class Translations {
public:
    static constexpr const char* languageKey = "QLT.language";
    static constexpr std::array languages{ Language{ "en", "English" }, Language{ "de", "Deutsch" } };

    /// What the user has chosen; empty where the desktop decides.
    [[nodiscard]] static std::string chosen(const DefaultsDomain& defaults);
    /// `language` is a code; empty leaves it to the desktop. It holds once it is installed.
    static void choose(DefaultsDomain& defaults, const std::string& language);

    /// Texts that are asked for from now on come in that language, those of the toolkit too, in place of the one before.
    /// A chosen language brings its numbers along.
    void install(const std::string& chosen);

private:
    QTranslator m_own;
    QTranslator m_toolkit;
};

}  // namespace quillet
