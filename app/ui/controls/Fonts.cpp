#include "app/ui/controls/Fonts.h"

#include "app/ui/AppTheme.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace quillet {
namespace {

/// Desktops come with text of 9 to 11 points; who wants it larger chooses more.
constexpr double maxUsualPoints = 11;
constexpr double usualPoints = 10;
constexpr double usualDotsPerInch = 96;
constexpr double maxScale = 2;

double textScale()
{
    static const double scale = [] {
        const double points = QFontDatabase::systemFont(QFontDatabase::GeneralFont).pointSizeF();
        const double dots = QGuiApplication::primaryScreen()->logicalDotsPerInchY() / usualDotsPerInch;
        return std::clamp((points > maxUsualPoints ? points / usualPoints : 1) * dots, 1.0, maxScale);
    }();
    return scale;
}

QFont systemFont(int pixels, QFont::Weight weight)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(scaled(pixels));
    font.setWeight(weight);
    return font;
}

}  // namespace

QFont titleFont() { return systemFont(AppTheme::titlePixels, QFont::DemiBold); }

QFont controlFont() { return systemFont(AppTheme::controlPixels, QFont::Normal); }

QFont secondaryFont() { return systemFont(AppTheme::secondaryPixels, QFont::Normal); }

QFont numberFont(int pixels)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(scaled(pixels));
    return font;
}

int scaled(int points) { return qRound(points * textScale()); }

}  // namespace quillet
