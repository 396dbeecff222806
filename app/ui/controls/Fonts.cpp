#include "app/ui/controls/Fonts.h"

#include "app/ui/AppTheme.h"

#include <QFontDatabase>

namespace quillet {
namespace {

QFont systemFont(int pixels, QFont::Weight weight)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(pixels);
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
    font.setPixelSize(pixels);
    return font;
}

}  // namespace quillet
