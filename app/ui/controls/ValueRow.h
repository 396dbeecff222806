// The row of a value that is typed or stepped: its title, a button for less, the field, a button for more, and "Reset". What
// the value is and may be is its owner's business.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QString>
#include <QWidget>

#include <functional>

class QPushButton;

namespace quillet {

class ValueField;

class ValueRow final : public QWidget {
    Q_OBJECT

public:
    /// As they are shown, and as a screen reader calls them; `fieldWidth` in points.
    struct Names {
        QString title;
        QString field;
        int fieldWidth;
        QString less;
        QString more;
        QString reset;
    };
    /// What the title takes where text has its usual size: what stands under the row begins after it. Points.
    static constexpr int minTitleWidth = 58;
    /// Of the column of titles, so that what follows them stands in line; there is an application.
    [[nodiscard]] static int titleWidth();
    static constexpr int spacing = 8;

    ValueRow(const ThemeSource& source, const Names& names, QWidget* parent = nullptr);

    [[nodiscard]] ValueField& field() { return *m_field; }
    void setCanReset(bool canReset);

    /// `step` is called with 1 or -1, from the buttons and from the field's keys.
    void onStep(const std::function<void(int direction)>& step);
    void onReset(std::function<void()> reset);

private:
    ValueField* m_field;
    QPushButton* m_less;
    QPushButton* m_more;
    QPushButton* m_reset;
};

}  // namespace quillet
