// A limit among the settings: one of several that are offered, or one that is typed.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QWidget>

#include <functional>

class QComboBox;
class QHBoxLayout;
class QLineEdit;

namespace quillet {

class Label;

class LimitPicker final : public QWidget {
    Q_OBJECT

public:
    struct Texts {
        QString title;
        /// What a screen reader calls the choice.
        QString name;
        /// In the empty field, and after it.
        QString placeholder;
        QString unit;
        /// What is said of a text that is no limit.
        QString refusal;
    };
    struct Handlers {
        /// The place of what was chosen among `labels`.
        std::function<void(int place)> chosen;
        /// Whether what was typed is a limit.
        std::function<bool(const QString& text)> committed;
    };

    /// The last of `labels` is the one with the field.
    LimitPicker(const ThemeSource& source, const Texts& texts, const QStringList& labels, Handlers handlers,
                QWidget* parent = nullptr);

    /// Shows a choice, and in the field `customText`.
    void show(int place, const QString& customText);

private:
    void commit();
    void sync();

    Texts m_texts;
    Handlers m_handlers;
    QComboBox* m_choice;
    QLineEdit* m_field;
    Label* m_unit;
    Label* m_refusal;
};

}  // namespace quillet
