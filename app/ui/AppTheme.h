// The program's colours and measures: a fixed palette, and what follows the appearance (light or dark). Every view takes them
// from here; no colour stands anywhere else.
// Threads: a value, no shared state.
#pragma once

#include <QColor>

#include <array>

namespace quillet {

enum class Appearance { light, dark };

struct AppTheme {
    /// What is the same in both appearances.
    static constexpr QColor cream{ 250, 242, 228 };
    static constexpr QColor navy{ 19, 8, 56 };
    static constexpr QColor accentPurple{ 124, 58, 237 };
    static constexpr QColor waveformSelected{ accentPurple };
    static constexpr QColor waveformRegionStart{ 249, 115, 22 };
    static constexpr QColor waveformRegionEnd{ waveformRegionStart };
    static constexpr QColor waveformPlayhead{ 16, 185, 129 };
    /// Destructive actions and refusals.
    static constexpr QColor red{ 220, 38, 38 };
    /// On `accentPurple` and `navy`.
    static constexpr QColor onAccent{ 255, 255, 255 };
    static constexpr QColor onToolbar{ cream };

    /// Of vocals, drums, bass, guitar, piano and the others; they are told apart on both cards.
    static constexpr std::array<QColor, 6> stemColors{ QColor(217, 70, 160), QColor(217, 119, 6),  QColor(37, 99, 235),
                                                       QColor(5, 150, 105),  QColor(124, 58, 237), QColor(100, 116, 139) };

    /// Of saved loops: purple, orange, green, blue, pink, yellow, teal, gray.
    static constexpr std::array<QColor, 8> loopColors{ QColor(124, 58, 237), QColor(234, 88, 12),  QColor(22, 163, 74),
                                                       QColor(37, 99, 235),  QColor(219, 39, 119), QColor(202, 138, 4),
                                                       QColor(13, 148, 136), QColor(100, 116, 139) };

    /// How much of the accent such a ground has, over a card.
    static constexpr double tintOpacity = 0.2;

    /// Points. Everything stands on a grid of 4.
    static constexpr int windowMargin = 20;
    static constexpr int cardSpacing = 16;
    static constexpr int cardPadding = 16;
    static constexpr int cardRadius = 12;
    static constexpr int controlRadius = 8;
    static constexpr int controlHeight = 30;
    static constexpr int maxContentWidth = 1200;
    /// Of the letters of titles, controls and what is secondary, pixels.
    static constexpr int titlePixels = 14;
    static constexpr int controlPixels = 13;
    static constexpr int secondaryPixels = 12;
    /// What is left of a disabled control's colours.
    static constexpr double disabledOpacity = 0.38;
    static constexpr int focusRingWidth = 2;

    explicit AppTheme(Appearance appearance);

    Appearance appearance;
    QColor window;
    QColor card;
    QColor cardLine;
    QColor field;
    QColor fieldLine;
    /// Under the pointer, and pressed.
    QColor fieldHover;
    QColor fieldPressed;
    QColor text;
    QColor secondaryText;
    /// The accent as text or as a thin line.
    QColor accentText;
    /// The same on a ground tinted with the accent.
    QColor accentTextOnTint;
    /// The track of switches that are off, and of sliders.
    QColor track;
    QColor waveformUnselected;
    /// Red as text.
    QColor redText;
};

/// `color` with that part of its opacity, 0 to 1.
[[nodiscard]] QColor withOpacity(QColor color, double opacity);

}  // namespace quillet
