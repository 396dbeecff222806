// A button that shows a symbol instead of a text. It is named for those who do not see it, and by its tooltip.
// Threads: main thread.
#pragma once

#include "app/ui/QuilletStyle.h"
#include "app/ui/ThemeSource.h"

#include <QPushButton>

namespace quillet {

class SymbolButton : public QPushButton {
    Q_OBJECT

public:
    /// `symbol` is one of resources/symbols; `name` says what the button does. `symbolSize` in points.
    SymbolButton(const ThemeSource& source, const QString& symbol, const QString& name, ButtonKind kind, int symbolSize = 15,
                 QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const ThemeSource& m_source;
    QString m_symbol;
    ButtonKind m_kind;
    int m_symbolSize;
};

}  // namespace quillet
