// A sentence on a strip of its own under the toolbar, with room for buttons after it.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QWidget>

#include <optional>

class QHBoxLayout;
class QProgressBar;
class QPushButton;

namespace quillet {

class Label;

class Notice : public QWidget {
    Q_OBJECT

public:
    Notice(const ThemeSource& source, const QString& sentence, QWidget* parent = nullptr);

    /// Takes as many lines as it needs.
    void setSentence(const QString& sentence);
    [[nodiscard]] QString sentence() const { return accessibleName(); }

protected:
    /// A bar after the sentence, which says as much; nothing: none. Percent.
    void setProgress(std::optional<int> percent);
    /// In the order in which they are added, after the sentence.
    QPushButton& addButton(const QString& title);

    void paintEvent(QPaintEvent* event) override;

private:
    const ThemeSource& m_source;
    Label* m_label;
    QHBoxLayout* m_row;
    QProgressBar* m_bar = nullptr;
};

}  // namespace quillet
