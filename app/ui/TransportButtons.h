// The two buttons of the transport: the round one that plays and pauses, and the one that holds.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QAbstractButton>

namespace quillet {

class PlayButton final : public QAbstractButton {
    Q_OBJECT

public:
    explicit PlayButton(const ThemeSource& source, QWidget* parent = nullptr);

    void setPlaying(bool isPlaying);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    [[nodiscard]] bool hitButton(const QPoint& place) const override;

private:
    const ThemeSource& m_source;
    bool m_isPlaying = false;
};

class HoldButton final : public QAbstractButton {
    Q_OBJECT

public:
    explicit HoldButton(const ThemeSource& source, QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void checkStateSet() override;

private:
    const ThemeSource& m_source;
};

}  // namespace quillet
