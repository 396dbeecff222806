// Draws the toolkit's own widgets in the program's look: buttons, fields, sliders, progress and scroll bars, menus, dialogs. So
// they keep what the toolkit gives them: keys, focus, accessibility. What a button is for it says by a property (see
// `ButtonKind`).
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QProxyStyle>

class QAbstractButton;
class QStyleOptionButton;
class QStyleOptionComplex;
class QStyleOptionProgressBar;
class QStyleOptionSlider;

namespace quillet {

enum class ButtonKind {
    /// On a card or on the window.
    plain,
    /// The one thing to do.
    accent,
    /// On the navy toolbar.
    toolbar,
    /// The same, for what destroys something.
    toolbarDanger,
    /// One of several in a row, of which one is chosen (checkable).
    segment,
    /// Nothing around it but under the pointer.
    bare,
};

/// To be set before the button is shown.
void setButtonKind(QAbstractButton& button, ButtonKind kind);

class QuilletStyle final : public QProxyStyle {
    Q_OBJECT

public:
    /// `source` outlives the style.
    explicit QuilletStyle(const ThemeSource& source);

    /// The palette of the present theme, for the application.
    [[nodiscard]] QPalette standardPalette() const override;

    void polish(QWidget* widget) override;
    using QProxyStyle::polish;
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget, QStyleHintReturn* data) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                         const QWidget* widget) const override;

private:
    void drawButton(const QStyleOptionButton& option, QPainter& painter, const QWidget* widget) const;
    void drawChoice(const QStyleOptionComplex& option, QPainter& painter, const QWidget* widget) const;
    void drawField(const QStyleOption& option, QPainter& painter, const QWidget* widget) const;
    void drawProgressBar(const QStyleOptionProgressBar& option, QPainter& painter) const;
    void drawScrollBar(const QStyleOptionSlider& option, QPainter& painter) const;
    [[nodiscard]] QColor textOf(ButtonKind kind, const QStyleOption& option) const;

    const ThemeSource& m_source;
};

}  // namespace quillet
