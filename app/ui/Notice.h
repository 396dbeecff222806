// A sentence on a strip of its own under the toolbar, with room for buttons behind it. Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QWidget>

class QHBoxLayout;
class QPushButton;

namespace quillet {

class Label;

class Notice : public QWidget {
    Q_OBJECT

public:
    Notice(const ThemeSource& source, const QString& sentence, QWidget* parent = nullptr);

    /// Shown on one line, cut in the middle where there is no room, whole in its tooltip.
    void setSentence(const QString& sentence);
    [[nodiscard]] const QString& sentence() const { return m_sentence; }

protected:
    /// In the order in which they are added, behind the sentence.
    QPushButton& addButton(const QString& title);

    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void fitSentence();

    const ThemeSource& m_source;
    QString m_sentence;
    Label* m_label;
    QHBoxLayout* m_row;
};

}  // namespace quillet
