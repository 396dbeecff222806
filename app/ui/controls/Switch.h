// A switch: on or off, at once. A check box in all but its looks.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QCheckBox>

class QVariantAnimation;

namespace quillet {

class Switch final : public QCheckBox {
    Q_OBJECT

public:
    /// `name` is what a screen reader calls it.
    Switch(const ThemeSource& source, const QString& name, QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    [[nodiscard]] bool hitButton(const QPoint& place) const override { return rect().contains(place); }

private:
    const ThemeSource& m_source;
    QVariantAnimation* m_slide;
};

}  // namespace quillet
