// One of several, chosen from a list that opens. Unlike the toolkit's own it leaves the wheel to the page that it stands in,
// and takes the keyboard by Tab only.
// Threads: main thread.
#pragma once

#include <QComboBox>
#include <QWheelEvent>

namespace quillet {

class Choice final : public QComboBox {
    Q_OBJECT

public:
    explicit Choice(const QString& name, QWidget* parent = nullptr)
        : QComboBox(parent)
    {
        setFocusPolicy(Qt::TabFocus);
        setAccessibleName(name);
        setAccessibleDescription(name);
    }

protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

}  // namespace quillet
