#include "app/ui/Translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>

#include <algorithm>

static void loadTranslations() { Q_INIT_RESOURCE(translations); }

namespace quillet {
namespace {

bool isSpoken(const std::string& language)
{
    return std::ranges::any_of(Translations::languages, [&](const Language& spoken) { return language == spoken.code; });
}

/// The first of the desktop's that there is.
std::string desktopLanguage()
{
    for (const QString& name : QLocale::system().uiLanguages()) {
        const std::string language = name.left(name.indexOf(QLatin1Char('-'))).toStdString();
        if (isSpoken(language))
            return language;
    }
    return "en";
}

}  // namespace

std::string Translations::chosen(const DefaultsDomain& defaults)
{
    const std::string language = defaults.string(languageKey).value_or("");
    return isSpoken(language) ? language : std::string();
}

void Translations::choose(DefaultsDomain& defaults, const std::string& language)
{
    if (language.empty())
        defaults.remove(languageKey);
    else
        defaults.setString(languageKey, language);
}

void Translations::install(const std::string& chosen)
{
    for (QTranslator* translator : { &m_own, &m_toolkit })
        QCoreApplication::removeTranslator(translator);
    QLocale::setDefault(QLocale::system());
    const std::string language = chosen.empty() ? desktopLanguage() : chosen;
    const QString code = QString::fromStdString(language);
    // One's own country's numbers, where the language agrees.
    if (!chosen.empty() && QLocale::system().language() != QLocale(code).language())
        QLocale::setDefault(QLocale(code));
    if (language == "en")
        return;
    loadTranslations();
    if (m_own.load(QStringLiteral(":/translations/quillet_") + code + QStringLiteral(".qm")))
        QCoreApplication::installTranslator(&m_own);
    if (m_toolkit.load(QStringLiteral("qtbase_") + code, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&m_toolkit);
}

}  // namespace quillet
