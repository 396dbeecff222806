// A field for a typed value. While it is edited it holds what is typed, from empty; otherwise it shows the value. Enter and the
// loss of the focus commit what was typed, Escape forgets it. What the text means is its owner's business.
// Threads: main thread.
#pragma once

#include <QLineEdit>

#include <functional>

namespace quillet {

class ValueField final : public QLineEdit {
    Q_OBJECT

public:
    /// `name` is what a screen reader calls it; `width` in points.
    ValueField(const QString& name, int width, QWidget* parent = nullptr);

    /// The text that stands for the value; it is shown once nothing is being typed.
    void showValue(const QString& text);

    /// `commit` is given what was typed; it calls `showValue` with what has become of the value.
    void onCommit(std::function<void(const QString& text)> commit) { m_commit = std::move(commit); }
    /// `step` is called with 1 or -1 for the keys Up and Down.
    void onStep(std::function<void(int direction)> step) { m_step = std::move(step); }

protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void finish(bool commit);

    bool m_isEditing = false;
    QString m_valueText;
    std::function<void(const QString& text)> m_commit;
    std::function<void(int direction)> m_step;
};

}  // namespace quillet
