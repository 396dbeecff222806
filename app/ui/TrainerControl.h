// The trainer: switched on it plays the loop faster from pass to pass (or slower); what it goes by is set in a drawer that is
// open meanwhile.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

class QHBoxLayout;
class QPushButton;

namespace quillet {

class Choice;
class Drawer;
class Label;
class Switch;
class ValueField;

class TrainerControl final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the control.
    TrainerControl(AppState& state, const ThemeSource& source, QWidget* parent = nullptr);

private:
    /// A number of the trainer and the field that shows it.
    struct Entry {
        ValueField* field;
        double (*get)(const Trainer& trainer);
        void (*set)(Trainer& trainer, double value);
        double min, max;
        bool isPercent;
    };

    [[nodiscard]] QWidget* buildSettings(const ThemeSource& source);
    void addEntry(QHBoxLayout& row, const QString& name, Entry entry);
    void commit(const Entry& entry, const QString& text);
    void syncState();
    void syncSettings();
    [[nodiscard]] QString status() const;

    AppState& m_state;
    Switch* m_switch;
    Label* m_status;
    QPushButton* m_resume;
    Choice* m_atGoal;
    std::vector<Entry> m_entries;
    Drawer* m_drawer;
};

}  // namespace quillet
