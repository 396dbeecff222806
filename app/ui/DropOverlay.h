// What lies over the window while something is dragged over it: whether it may be dropped. It takes no event.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QWidget>

namespace quillet {

class DropOverlay final : public QWidget {
    Q_OBJECT

public:
    enum class Drag { none, audio, unsupported };

    DropOverlay(const ThemeSource& source, QWidget* parent);

    void setDrag(Drag drag);
    [[nodiscard]] Drag drag() const { return m_drag; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const ThemeSource& m_source;
    Drag m_drag = Drag::none;
};

}  // namespace quillet
