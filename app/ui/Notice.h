// A sentence on a strip of its own under the toolbar, with room for buttons after it.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QWidget>

class QHBoxLayout;
class QPushButton;

namespace quillet {

class ElidedLabel;

class Notice : public QWidget {
    Q_OBJECT

public:
    Notice(const ThemeSource& source, const QString& sentence, QWidget* parent = nullptr);

    void setSentence(const QString& sentence);
    [[nodiscard]] const QString& sentence() const;

protected:
    /// In the order in which they are added, after the sentence.
    QPushButton& addButton(const QString& title);

    void paintEvent(QPaintEvent* event) override;

private:
    const ThemeSource& m_source;
    ElidedLabel* m_label;
    QHBoxLayout* m_row;
};

}  // namespace quillet
