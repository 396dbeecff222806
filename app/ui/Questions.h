// Questions that stand before a window and wait for an answer.
// Threads: main thread.
#pragma once

#include <QMessageBox>

#include <functional>

namespace quillet {

struct Question {
    QString question;
    /// What follows from it; may be empty.
    QString consequence;
    QString confirm;
    bool isDestructive = false;
};

/// A sheet before `window`, still to be opened, which destroys itself; `confirmed` is called if the answer is yes. The safe
/// answer is the one that Enter gives before something is destroyed.
[[nodiscard]] QMessageBox* makeQuestion(QWidget& window, const Question& question, std::function<void()> confirmed);

/// One sentence to be read, likewise.
[[nodiscard]] QMessageBox* makeStatement(QWidget& window, const QString& title, const QString& sentence);

}  // namespace quillet
