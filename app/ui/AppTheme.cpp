#include "app/ui/AppTheme.h"

#include <cmath>

namespace quillet {
namespace {

constexpr double cardLineOpacity = 0.10;
constexpr double fieldLineOpacity = 0.20;
constexpr double unselectedOpacity = 0.30;
constexpr double trackOpacity = 0.18;

/// `over`, as far as it covers, on `ground`.
QColor mixed(QColor ground, QColor over, double share)
{
    const auto part = [share](int from, int to) { return static_cast<int>(std::lround(from + (to - from) * share)); };
    return { part(ground.red(), over.red()), part(ground.green(), over.green()), part(ground.blue(), over.blue()) };
}

}  // namespace

QColor withOpacity(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(color.alphaF() * opacity));
    return color;
}

AppTheme::AppTheme(Appearance wanted)
    : appearance(wanted)
{
    const bool isDark = appearance == Appearance::dark;
    window = isDark ? QColor(0x15, 0x0F, 0x2C) : cream;
    card = isDark ? QColor(0x21, 0x1A, 0x3F) : QColor(0xFF, 0xFC, 0xF6);
    field = isDark ? QColor(0x2B, 0x23, 0x50) : QColor(0xFF, 0xFF, 0xFF);
    text = isDark ? QColor(0xF6, 0xEF, 0xE2) : navy;
    secondaryText = isDark ? QColor(0xB9, 0xB0, 0xCF) : QColor(0x5E, 0x55, 0x78);
    accentText = isDark ? QColor(0xA8, 0x84, 0xFF) : accentPurple;
    accentTextOnTint = isDark ? QColor(0xC4, 0xAB, 0xFF) : QColor(0x5B, 0x21, 0xB6);
    redText = isDark ? QColor(0xFF, 0x8A, 0x8A) : QColor(0xB9, 0x1C, 0x1C);
    cardLine = withOpacity(text, cardLineOpacity);
    fieldLine = withOpacity(text, fieldLineOpacity);
    fieldHover = mixed(field, accentText, isDark ? 0.12 : 0.07);
    fieldPressed = mixed(field, accentText, isDark ? 0.24 : 0.16);
    track = withOpacity(text, trackOpacity);
    waveformUnselected = withOpacity(isDark ? cream : navy, unselectedOpacity);
}

}  // namespace quillet
