// A label for what may be longer than the room there is: one line, cut in the middle. Those who hover over it or hear it get
// all of it.
// Threads: main thread.
#pragma once

#include "app/ui/controls/Label.h"

namespace quillet {

class ElidedLabel final : public Label {
    Q_OBJECT

public:
    ElidedLabel(const ThemeSource& source, Role role, QWidget* parent = nullptr);

    /// In place of `setText`. `name` is what a screen reader says where that is more.
    void setWholeText(const QString& text, const QString& name = {});

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void fit();

    QString m_wholeText;
};

}  // namespace quillet
