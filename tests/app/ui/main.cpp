#include "app/ui/QuilletStyle.h"
#include "app/ui/controls/CheckableAccess.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTranslator>

#include <cstdio>
#include <set>
#include <string>

static void loadTranslations() { Q_INIT_RESOURCE(translations); }

namespace {

/// Translates nothing, and notes what of the program's own the German texts lack.
class MissingTexts final : public QTranslator {
public:
    MissingTexts() { m_isLoaded = load(QStringLiteral(":/translations/quillet_de.qm")); }

    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* text, const char* remark, int n) const override
    {
        const bool isOwn = std::string_view(context).starts_with("quillet::") || std::string_view(context) == "Commands";
        if (isOwn && QTranslator::translate(context, text, remark, n).isNull())
            m_missing.insert(std::string(context) + ": " + text);
        return {};
    }

    [[nodiscard]] bool report() const
    {
        for (const std::string& text : m_missing)
            std::fprintf(stderr, "not translated: %s\n", text.c_str());
        return m_isLoaded && m_missing.empty();
    }

private:
    bool m_isLoaded = false;
    mutable std::set<std::string> m_missing;
};

}  // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    // No screen is needed, wherever the tests run.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    loadTranslations();
    MissingTexts texts;
    QCoreApplication::installTranslator(&texts);
    const quillet::ThemeSource theme;
    QApplication::setStyle(new quillet::QuilletStyle(theme));
    quillet::installCheckableAccess();
    const int status = RUN_ALL_TESTS();
    return texts.report() ? status : 1;
}
