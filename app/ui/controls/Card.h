// The ground on which controls that belong together stand: rounded, a little lighter than the window, with a hairline around
// it.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QWidget>

namespace quillet {

class Card final : public QWidget {
    Q_OBJECT

public:
    explicit Card(const ThemeSource& source, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const ThemeSource& m_source;
};

}  // namespace quillet
