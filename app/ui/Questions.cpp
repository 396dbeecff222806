#include "app/ui/Questions.h"

#include <QPushButton>

#include <utility>

namespace quillet {
namespace {

QMessageBox* makeBox(QWidget& window, const QString& title, const QString& text, QMessageBox::StandardButton button)
{
    auto* box = new QMessageBox(QMessageBox::NoIcon, title, text, button, &window);
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    return box;
}

}  // namespace

QMessageBox* makeQuestion(QWidget& window, const Question& question, std::function<void()> confirmed)
{
    QMessageBox* box = makeBox(window, question.confirm, question.question, QMessageBox::Cancel);
    box->setInformativeText(question.consequence);
    QPushButton* confirm =
        box->addButton(question.confirm, question.isDestructive ? QMessageBox::DestructiveRole : QMessageBox::AcceptRole);
    if (question.isDestructive)
        box->setDefaultButton(QMessageBox::Cancel);
    else
        box->setDefaultButton(confirm);
    QObject::connect(box, &QMessageBox::buttonClicked, &window,
                     [confirm, confirmed = std::move(confirmed)](const QAbstractButton* button) {
                         if (button == confirm)
                             confirmed();
                     });
    return box;
}

QMessageBox* makeStatement(QWidget& window, const QString& title, const QString& sentence)
{
    return makeBox(window, title, sentence, QMessageBox::Ok);
}

}  // namespace quillet
